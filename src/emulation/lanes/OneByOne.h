#pragma once

namespace emulation {

/// Stores first + the number of each of some lanes, one after the other, where a set has no
/// instruction for it.
template <class Set>
void storePlacesOneByOne(int* to, unsigned lanes, int first) {
  for (int lane = 0; lane < Set::width; ++lane) {
    *to = first + lane;
    to += lanes >> lane & 1;
  }
}

}  // namespace emulation
