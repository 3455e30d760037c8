#include "lanes/Sse2.h"

#include "field/interpolation/Interpolation.h"

namespace pistonfield {

void addInterpolatedSse2(const SplitNumbers* samples, const double* factors, int taps,
                         double weightRe, double weightIm, int count, double* re, double* im) {
  interpolateAndAdd<Sse2>(samples, factors, taps, weightRe, weightIm, count, re, im);
}

}  // namespace pistonfield
