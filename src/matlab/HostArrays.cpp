#include "matlab/HostArrays.h"

#include <algorithm>
#include <array>
#include <limits>

namespace pistonfield {

void require(bool isValid) {
  if (!isValid)
    mexErrMsgTxt(
        "Wrong arguments. Call pistongrid or pistonarray instead of pistonfield_pressure.");
}

bool isReal(const mxArray* array) {
  return mxIsDouble(array) && !mxIsComplex(array) && !mxIsSparse(array);
}

std::string textOf(const mxArray* array) {
  std::array<char, 16> text{};
  return mxGetString(array, text.data(), text.size()) == 0 ? text.data() : "";
}

std::vector<double> realsOf(const mxArray* array) {
  if (!isReal(array)) return {};
  const double* const values = mxGetPr(array);
  return {values, values + mxGetNumberOfElements(array)};
}

double scalarOf(const mxArray* array) {
  const std::vector<double> values = realsOf(array);
  return values.size() == 1 ? values[0] : std::numeric_limits<double>::quiet_NaN();
}

double numberOf(const mxArray* array) {
  require(isReal(array) && mxGetNumberOfElements(array) == 1);
  return mxGetScalar(array);
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

const mxArray* memberOf(const mxArray* structure, const char* name) {
  require(mxIsStruct(structure) && mxGetNumberOfElements(structure) == 1);
  const mxArray* const array = mxGetField(structure, 0, name);
  require(array && mxIsDouble(array) && !mxIsSparse(array));
  return array;
}

const double* realsIn(const mxArray* structure, const char* name, std::size_t count) {
  const mxArray* const array = memberOf(structure, name);
  require(isReal(array) && mxGetNumberOfElements(array) == count);
  return mxGetPr(array);
}

std::vector<Field::Piston> pistonsOf(const mxArray* structure) {
  const std::size_t count = mxGetNumberOfElements(memberOf(structure, "widths"));
  const double* const widths = realsIn(structure, "widths", count);
  const double* const heights = realsIn(structure, "heights", count);
  const double* const centres = realsIn(structure, "centres", 3 * count);
  const double* const axes = realsIn(structure, "axes", 9 * count);
  const std::vector<std::complex<double>> weights =
      numbersOf(memberOf(structure, "weights"), count);

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

mxArray* realArray(const std::vector<mwSize>& sizes) {
  return mxCreateNumericArray(static_cast<mwSize>(sizes.size()), sizes.data(), mxDOUBLE_CLASS,
                              mxREAL);
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

mxArray* arrayOf(const std::vector<double>& values, const std::vector<mwSize>& sizes) {
  mxArray* const array = realArray(sizes);
  std::copy(values.begin(), values.end(), mxGetPr(array));
  return array;
}

mxArray* columnOf(const std::vector<double>& values) {
  return arrayOf(values, {static_cast<mwSize>(values.size()), 1});
}

}  // namespace pistonfield
