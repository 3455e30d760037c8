#pragma once

#include "FastNearfield/PointPressure.h"
#include "core/InstructionSet.h"

namespace pistonfield {

/// A rule must not have more nodes than this: constant memory holds no more either.
constexpr int mostPackedNodes = 512;

/// The pressure at many points at once: `positions` holds x, y, z of each of the `count` points. A
/// value depends on its own point only: it is that of `pointPressure` for one lane, bit for bit
/// where the instruction set has a fused multiply-add.
using PackedPressure = void(const float* positions, Complex* pressures, int count, float a, float b,
                            float k, const SymmetricRule<float>& rule);

/// The one for an instruction set, which this machine must have. With AVX-512 there is another one,
/// with the same results, for machines that divide slowly.
PackedPressure* packedPressure(InstructionSet set, bool slowDivision = dividesSlowly());

}  // namespace pistonfield
