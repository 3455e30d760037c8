#pragma once

#include <ostream>

namespace pistonfield {

/// The two-line report of a failed condition, followed by an empty line; flushes `out`.
inline void writeErrorReport(std::ostream& out, const char* condition, int line, const char* file) {
  out << "ERROR: assertion failure in " << file << " at line " << line << "\n"
      << "       condition failed: (" << condition << ").\n"
      << std::endl;
}

}  // namespace pistonfield
