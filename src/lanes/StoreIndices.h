#pragma once

// For instruction sets that cannot compress a register: two ways to store first + n for each lane n
// whose bit is set in `lanes`. They are templates, so that each is tied to a set.

namespace pistonfield {

/// Lane by lane.
template <class Set>
void storeIndicesInLoop(int* to, unsigned lanes, int first) {
  for (int lane = 0; lane < Set::width; ++lane) {
    *to = first + lane;
    to += lanes >> lane & 1;
  }
}

/// A table: of[lanes] holds the numbers of the bits set in `lanes`, ascending, then zeros.
template <class Set>
struct SetLanes {
  alignas(32) int of[256][8];

  static constexpr SetLanes make() {
    SetLanes table{};
    for (int lanes = 0; lanes < 256; ++lanes)
      for (int lane = 0, n = 0; lane < 8; ++lane)
        if ((lanes >> lane & 1) != 0) table.of[lanes][n++] = lane;
    return table;
  }
};

template <class Set>
constexpr SetLanes<Set> setLanes = SetLanes<Set>::make();

}  // namespace pistonfield
