#include "lanes/Neon.h"

#include "field/interpolation/Interpolation.h"

namespace pistonfield {

void addInterpolatedNeon(const SplitNumbers* samples, const double* factors, int taps,
                         double weightRe, double weightIm, int count, double* re, double* im) {
  interpolateAndAdd<Neon>(samples, factors, taps, weightRe, weightIm, count, re, im);
}

}  // namespace pistonfield
