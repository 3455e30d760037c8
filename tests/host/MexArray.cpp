#include "host/MexArray.h"

#include <utility>

namespace host {

mxArray matrix(std::size_t rows, std::size_t columns, std::vector<double> values) {
  mxArray array;
  array.dims = {rows, columns};
  array.re = std::move(values);
  return array;
}

mxArray scalar(double value) { return matrix(1, 1, {value}); }

mxArray text(const std::string& characters) {
  mxArray array;
  array.className = "char";
  array.dims = {characters.empty() ? std::size_t{0} : 1, characters.size()};
  array.bytes.assign(characters.begin(), characters.end());
  return array;
}

mxArray ofClass(const std::string& className, std::size_t rows, std::size_t columns) {
  mxArray array;
  array.className = className;
  array.dims = {rows, columns};
  array.bytes.resize(rows * columns);
  return array;
}

mxArray complexMatrix(std::size_t rows, std::size_t columns, std::vector<double> re,
                      std::vector<double> im) {
  mxArray array = matrix(rows, columns, std::move(re));
  array.im = std::move(im);
  array.isComplex = true;
  return array;
}

mxArray sparseMatrix(std::size_t rows, std::size_t columns, std::vector<double> nonZeros) {
  mxArray array = matrix(rows, columns, std::move(nonZeros));
  array.isSparse = true;
  return array;
}

}  // namespace host
