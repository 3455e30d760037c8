#pragma once

#include <set>
#include <string>
#include <tuple>

// What the sources below src, but for the emulation device's own, say about their calls of the CUDA
// runtime.

namespace support {

/// A place where the system looks at what the runtime answered.
struct CheckSite {
  std::string file;  // as reports name it
  int line;          // as reports show it
  bool isStage;      // a check for what is pending; else of one call
  std::string text;  // the stage's label, or the call as reports show it

  bool operator<(const CheckSite& other) const {
    return std::tie(file, line) < std::tie(other.file, other.line);
  }
};

std::set<CheckSite> checkSites();

/// The calls of the runtime, launches included, whose answers meet no check where they are made:
/// "<file> <function>", as often as they are written.
std::multiset<std::string> uncheckedCalls();

}  // namespace support
