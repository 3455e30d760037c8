#pragma once

namespace pistonfield {

/// For each set of eight lanes, given as bits: the places of its members, one after the other, and
/// then zeros. `Set` ties it to an instruction set's file.
template <class Set>
struct LanePlaces {
  using Eight = short __attribute__((vector_size(16)));

  Eight of[256];

  static constexpr LanePlaces make() {
    LanePlaces table{};
    for (int bits = 0; bits < 256; ++bits) {
      short places[8] = {};
      for (int lane = 0, n = 0; lane < 8; ++lane)
        if ((bits >> lane & 1) != 0) places[n++] = static_cast<short>(lane);
      table.of[bits] = Eight{places[0], places[1], places[2], places[3],
                             places[4], places[5], places[6], places[7]};
    }
    return table;
  }
};

template <class Set>
constexpr LanePlaces<Set> lanePlaces = LanePlaces<Set>::make();

}  // namespace pistonfield
