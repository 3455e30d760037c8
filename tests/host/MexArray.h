#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// A value of the host's language. Real and imaginary parts are separate.
struct mxArray {
  std::string className = "double";
  std::vector<std::size_t> dims = {0, 0};
  bool isSparse = false;
  bool isComplex = false;
  std::vector<double> re;   // of doubles
  std::vector<double> im;   // of complex doubles
  std::vector<char> bytes;  // of any other class
};

namespace host {

/// A rows × columns matrix of doubles, column by column.
inline mxArray matrix(std::size_t rows, std::size_t columns, std::vector<double> values) {
  mxArray array;
  array.dims = {rows, columns};
  array.re = std::move(values);
  return array;
}

inline mxArray scalar(double value) { return matrix(1, 1, {value}); }

inline mxArray text(const std::string& characters) {
  mxArray array;
  array.className = "char";
  array.dims = {characters.empty() ? std::size_t{0} : 1, characters.size()};
  array.bytes.assign(characters.begin(), characters.end());
  return array;
}

/// A value of another class: its elements are there, as zero bytes that are no doubles.
inline mxArray ofClass(const std::string& className, std::size_t rows, std::size_t columns) {
  mxArray array;
  array.className = className;
  array.dims = {rows, columns};
  array.bytes.resize(rows * columns);
  return array;
}

inline mxArray complexMatrix(std::size_t rows, std::size_t columns, std::vector<double> re,
                             std::vector<double> im) {
  mxArray array = matrix(rows, columns, std::move(re));
  array.im = std::move(im);
  array.isComplex = true;
  return array;
}

inline mxArray sparseMatrix(std::size_t rows, std::size_t columns, std::vector<double> nonZeros) {
  mxArray array = matrix(rows, columns, std::move(nonZeros));
  array.isSparse = true;
  return array;
}

}  // namespace host
