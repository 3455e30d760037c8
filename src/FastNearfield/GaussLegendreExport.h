#pragma once

#include <string>

namespace pistonfield {

/// Prints the Gauss–Legendre rule of `order` ≥ 1 nodes on [−1, 1] as source text, or writes it to
/// files. Numbers have a decimal point and no separators, whatever the locale.
///
/// `output` is "C++" or "c++", "F77" or "f77", "F90" or "f90", "MAT" or "mat" for text on standard
/// output; anything else is the root of the names of three files: root + "_w.txt" holds the
/// weights, root + "_x.txt" the abscissas, root + "_r.txt" the ends −1 and 1, one number a line.
/// Existing files are overwritten. Leaves the precision of standard output at 16 digits.
///
/// An order of 0 ends the process as `legendre_compute` does; a negative one throws std::bad_alloc.
void legendre_handle(int order, std::string output);

/// The same, and returns whether the files, if any, were written whole.
bool exportRule(int order, const std::string& output);

/// Writes n lines of m values; `table` holds the values line after line. A file that cannot be
/// opened is said on standard error, one that cannot be written whole is not.
void dtable_write0(std::string outputFileName, int m, int n, double* table);

/// Prints the local date and time.
void timestamp();

}  // namespace pistonfield
