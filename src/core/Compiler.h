#pragma once

#include <string>

namespace pistonfield {

/// The name and the version of the compiler of the file that includes this.
inline std::string compiler() {
#if defined(__clang__)
  return "clang++ " __clang_version__;
#elif defined(__GNUC__)
  return "g++ " __VERSION__;
#elif defined(_MSC_VER)
  return "MSVC " + std::to_string(_MSC_FULL_VER);
#else
  return "unknown";
#endif
}

}  // namespace pistonfield
