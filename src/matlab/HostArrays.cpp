#include "matlab/HostArrays.h"

namespace pistonfield {

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
