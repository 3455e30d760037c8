#include "lanes/Avx512.h"

#include "field/interpolation/Interpolation.h"

namespace pistonfield {

void addInterpolatedAvx512(const SplitNumbers* samples, const double* factors, int taps,
                           double weightRe, double weightIm, int count, double* re, double* im) {
  interpolateAndAdd<Avx512>(samples, factors, taps, weightRe, weightIm, count, re, im);
}

}  // namespace pistonfield
