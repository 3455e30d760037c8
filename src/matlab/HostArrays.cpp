#include "matlab/HostArrays.h"

namespace pistonfield {
namespace {

/// The field of a struct, which must be full and double.
const mxArray* member(const mxArray* structure, const char* name) {
  const mxArray* const array = mxGetField(structure, 0, name);
  require(array && mxIsDouble(array) && !mxIsSparse(array));
  return array;
}

/// The values of a field, which must be `count` real numbers.
const double* reals(const mxArray* structure, const char* name, std::size_t count) {
  const mxArray* const array = member(structure, name);
  require(isReal(array) && mxGetNumberOfElements(array) == count);
  return mxGetPr(array);
}

}  // namespace

void require(bool isValid) {
  if (!isValid)
    mexErrMsgTxt(
        "Wrong arguments. Call pistongrid or pistonarray instead of pistonfield_pressure.");
}

bool isReal(const mxArray* array) {
  return mxIsDouble(array) && !mxIsComplex(array) && !mxIsSparse(array);
}

const Position* positionsOf(const mxArray* matrix) {
  require(isReal(matrix) && mxGetM(matrix) == 3);
  static_assert(sizeof(Position) == 3 * sizeof(double));
  return reinterpret_cast<const Position*>(mxGetPr(matrix));
}

std::vector<std::complex<double>> numbersOf(const mxArray* array, std::size_t count) {
  require(mxIsDouble(array) && !mxIsSparse(array) && mxGetNumberOfElements(array) == count);
  const double* const re = mxGetPr(array);
  const double* const im = mxIsComplex(array) ? mxGetPi(array) : nullptr;
  std::vector<std::complex<double>> values(count);
  for (std::size_t n = 0; n < count; ++n) values[n] = {re[n], im ? im[n] : 0};
  return values;
}

std::vector<Field::Piston> pistonsOf(const mxArray* structure) {
  require(mxIsStruct(structure) && mxGetNumberOfElements(structure) == 1);
  const std::size_t count = mxGetNumberOfElements(member(structure, "widths"));
  const double* const widths = reals(structure, "widths", count);
  const double* const heights = reals(structure, "heights", count);
  const double* const centres = reals(structure, "centres", 3 * count);
  const double* const axes = reals(structure, "axes", 9 * count);
  const std::vector<std::complex<double>> weights = numbersOf(member(structure, "weights"), count);

  std::vector<Field::Piston> pistons(count);
  for (std::size_t m = 0; m < count; ++m) {
    Field::Piston& piston = pistons[m];
    piston.width = widths[m];
    piston.height = heights[m];
    for (std::size_t n = 0; n < 3; ++n) piston.centre[n] = centres[3 * m + n];
    for (std::size_t n = 0; n < 9; ++n) piston.axes[n / 3][n % 3] = axes[9 * m + n];
    piston.weight = weights[m];
  }
  return pistons;
}

mxArray* arrayOf(const std::vector<std::complex<double>>& values,
                 const std::vector<mwSize>& sizes) {
  mxArray* const array = mxCreateNumericArray(static_cast<mwSize>(sizes.size()), sizes.data(),
                                              mxDOUBLE_CLASS, mxCOMPLEX);
  auto* const re = static_cast<double*>(mxGetData(array));
  auto* const im = static_cast<double*>(mxGetImagData(array));
  for (std::size_t n = 0; n < values.size(); ++n) {
    re[n] = values[n].real();
    im[n] = values[n].imag();
  }
  return array;
}

}  // namespace pistonfield
