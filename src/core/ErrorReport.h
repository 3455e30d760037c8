#pragma once

#include <ostream>
#include <string>

namespace pistonfield {

/// Writes the two-line report of a failed condition and an empty line, and flushes `out`.
inline void writeErrorReport(std::ostream& out, const char* condition, int line, const char* file) {
  // A locale would group the digits of a number.
  out << "ERROR: assertion failure in " << file << " at line " << std::to_string(line) << "\n"
      << "       condition failed: (" << condition << ").\n"
      << std::endl;
}

}  // namespace pistonfield
