#pragma once

#include <cstddef>
#include <string>
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
mxArray matrix(std::size_t rows, std::size_t columns, std::vector<double> values);
mxArray scalar(double value);
mxArray text(const std::string& characters);

/// A value of another class. Its elements are zero bytes, which must not be read as doubles.
mxArray ofClass(const std::string& className, std::size_t rows, std::size_t columns);

mxArray complexMatrix(std::size_t rows, std::size_t columns, std::vector<double> re,
                      std::vector<double> im);
mxArray sparseMatrix(std::size_t rows, std::size_t columns, std::vector<double> nonZeros);

}  // namespace host
