#pragma once

#include "field/interpolation/AddInterpolated.h"
#include "lanes/Pack.h"

namespace pistonfield {

template <class Set, int taps>
void addWeightedTaps(const SplitNumbers* samples, const double* factors, double weightRe,
                     double weightIm, int count, double* re, double* im) {
  using V = Pack<typename Set::Double>;
  static_assert(interpolatedTogether % V::lanes == 0);
  const V wr(weightRe), wi(weightIm);
  for (int i = 0; i < count; i += V::lanes) {
    V sumRe(0.0), sumIm(0.0);
    for (int t = 0; t < taps; ++t) {
      const V factor(factors[t]);
      sumRe = multiplyAdd(factor, V::load(samples[t].re + i), sumRe);
      sumIm = multiplyAdd(factor, V::load(samples[t].im + i), sumIm);
    }
    multiplyAdd(wr, sumRe, multiplyAdd(-wi, sumIm, V::load(re + i))).store(re + i);
    multiplyAdd(wr, sumIm, multiplyAdd(wi, sumRe, V::load(im + i))).store(im + i);
  }
}

template <class Set>
void interpolateAndAdd(const SplitNumbers* samples, const double* factors, int taps,
                       double weightRe, double weightIm, int count, double* re, double* im) {
  if (taps == 1)
    addWeightedTaps<Set, 1>(samples, factors, weightRe, weightIm, count, re, im);
  else
    addWeightedTaps<Set, interpolationTaps>(samples, factors, weightRe, weightIm, count, re, im);
}

}  // namespace pistonfield
