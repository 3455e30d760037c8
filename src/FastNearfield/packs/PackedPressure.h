#pragma once

#include "FastNearfield/point/PointPressure.h"
#include "lanes/InstructionSet.h"

namespace pistonfield {

/// The part of an array that is used soon.
template <class T>
struct UsedSoon {
  const T *next, *end;
};

/// The points that a caller reads soon, as x, y, z of each, and the parts of the pressures that it
/// writes soon.
struct CallersDoubles {
  UsedSoon<double> points, re, im;
};

/// Computes the pressures at many points in packs: `positions` holds x, y, z of each of the `count`
/// points. The rule has at most `mostNodes` nodes. A pressure depends on its own point only. It is
/// that of `pointPressure` for one float, bit for bit if the instruction set has a fused
/// multiply-add.
///
/// Meanwhile prefetches the doubles of as many points in `callers`, so that the caller does not
/// wait for memory afterwards.
using PackedPressure = void(const float* positions, Complex* pressures, int count, float halfWidth,
                            float halfHeight, float k, const SymmetricRule<float>& rule,
                            const CallersDoubles& callers);

/// Returns the function for an instruction set. This machine must have the set. AVX-512 has two
/// functions with the same results; one is for machines that divide slowly.
PackedPressure* packedPressure(InstructionSet set, bool slowDivision = dividesSlowly());

/// Declarations of functions with this signature, each defined in a file that is compiled for its
/// instruction set.
PackedPressure packedSse2, packedAvx2, packedAvx512, packedAvx512SlowDivision, packedNeon;

}  // namespace pistonfield
