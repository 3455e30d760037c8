#pragma once

#include <string>

namespace pistonfield {

/// Prints the Gauss–Legendre rule of `order` ≥ 1 nodes on [−1, 1] as source text, or writes it to
/// files. Numbers have a decimal point and no separators in every locale.
///
/// If `output` is "C++" or "c++", "F77" or "f77", "F90" or "f90", "MAT" or "mat", writes source
/// text to standard output. Any other `output` is the root of three file names: root + "_w.txt"
/// receives the weights, root + "_x.txt" the abscissas, root + "_r.txt" the ends −1 and 1, one
/// number per line. Existing files are overwritten. Sets the precision of standard output to 16
/// digits.
///
/// An order of 0 ends the process as `legendre_compute` does; a negative order throws
/// std::bad_alloc.
void legendre_handle(int order, std::string output);

/// The same. Returns false if a file could not be written completely.
bool exportRule(int order, const std::string& output);

/// Writes n lines of m values to a file; `table` holds the values line by line. Prints a message to
/// standard error if the file cannot be opened, but none if it cannot be written completely.
void dtable_write0(std::string outputFileName, int m, int n, double* table);

/// Prints the local date and time.
void timestamp();

}  // namespace pistonfield
