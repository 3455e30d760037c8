#pragma once

#include "FastNearfield/PointPressure.h"
#include "core/InstructionSet.h"

namespace pistonfield {

/// Points, and room for their pressures.
struct PointBatch {
  static constexpr int capacity = 2048;
  int count;
  float x[capacity], y[capacity], z[capacity];
  float re[capacity], im[capacity];
};

/// The pressure at the points of a batch, many at once. A value depends on its own point only: it
/// is that of `pointPressure` for one lane, bit for bit where the instruction set has a fused
/// multiply-add.
using PackedPressure = void(PointBatch& batch, float a, float b, float k,
                            const SymmetricRule<float>& rule);

/// The one for an instruction set, which this machine must have.
PackedPressure* packedPressure(InstructionSet set);

}  // namespace pistonfield
