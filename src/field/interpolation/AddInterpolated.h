#pragma once

#include "lanes/InstructionSet.h"

namespace pistonfield {

/// How many samples the value of a polynomial through neighbouring samples is computed from.
constexpr int interpolationTaps = 12;

/// Real and imaginary parts of numbers.
struct SplitNumbers {
  const double *re, *im;
};

/// Adds weight·Σ factors[t]·samples[t][i] to re[i] + i·im[i], for i < count. All arrays have as
/// many elements as the next multiple of `interpolatedTogether`. `taps` is 1 or interpolationTaps.
using AddInterpolated = void(const SplitNumbers* samples, const double* factors, int taps,
                             double weightRe, double weightIm, int count, double* re, double* im);

constexpr int interpolatedTogether = 8;

/// Returns the function for an instruction set. This machine must have the set.
AddInterpolated* addInterpolated(InstructionSet set);

/// Declarations of functions with this signature, each in a file that is compiled for its
/// instruction set.
AddInterpolated addInterpolatedSse2, addInterpolatedAvx2, addInterpolatedAvx512,
    addInterpolatedNeon;

}  // namespace pistonfield
