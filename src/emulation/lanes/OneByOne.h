#pragma once

namespace emulation {

/// Stores some lanes, one after the other, where a set has no instruction for it.
template <class Set>
void storeOneByOne(float* to, unsigned lanes, typename Set::Register x) {
  float all[Set::width];
  Set::store(all, x);
  for (int lane = 0; lane < Set::width; ++lane) {
    *to = all[lane];
    to += lanes >> lane & 1;
  }
}

/// Stores first + the number of each lane, likewise.
template <class Set>
void storePlacesOneByOne(int* to, unsigned lanes, int first) {
  for (int lane = 0; lane < Set::width; ++lane) {
    *to = first + lane;
    to += lanes >> lane & 1;
  }
}

}  // namespace emulation
