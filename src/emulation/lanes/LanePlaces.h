#pragma once

namespace emulation {

/// For each set of eight lanes, given as bits: the places of its members, one after the other, and
/// then zeros. `Set` ties it to an instruction set's file.
template <class Set>
struct LanePlaces {
  alignas(32) int of[256][8];

  static constexpr LanePlaces make() {
    LanePlaces table{};
    for (int bits = 0; bits < 256; ++bits)
      for (int lane = 0, n = 0; lane < 8; ++lane)
        if ((bits >> lane & 1) != 0) table.of[bits][n++] = lane;
    return table;
  }
};

template <class Set>
constexpr LanePlaces<Set> lanePlaces = LanePlaces<Set>::make();

}  // namespace emulation
