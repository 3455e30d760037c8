#pragma once

#include "benchmarks/rayleigh/AddElement.h"
#include "lanes/Pack.h"

namespace rayleigh {

/// `Set` also has `inverseRootEstimate`, 1/√x within 2^-11.
template <class Set>
void addElement(const Element& element, const float* x, const float* y, const float* z, int count,
                float* re, float* im) {
  using V = pistonfield::Pack<Set>;
  static_assert(pointsTogether % V::lanes == 0);
  const V zero(0.0f), one(1.0f), half(0.5f), roundsToIntegers(0x1.8p23f);
  const V factorRe(element.factor.real()), factorIm(element.factor.imag());
  for (int n = 0; n < count; n += V::lanes) {
    V px = V::load(x + n) - V(element.centre[0]), py = V::load(y + n) - V(element.centre[1]),
      pz = V::load(z + n) - V(element.centre[2]);
    if (element.turned) {
      const auto along = [&](const std::array<float, 3>& axis) {
        return multiplyAdd(px, V(axis[0]), multiplyAdd(py, V(axis[1]), pz * V(axis[2])));
      };
      const V own[] = {along(element.axes[0]), along(element.axes[1]), along(element.axes[2])};
      px = own[0];
      py = own[1];
      pz = own[2];
    }
    const V besideX = larger(absolute(px) - V(element.halfWidth), zero);
    const V besideY = larger(absolute(py) - V(element.halfHeight), zero);
    const V zz = pz * pz;
    const float nearest =
        smallest(multiplyAdd(besideX, besideX, multiplyAdd(besideY, besideY, zz)));
    const ProductRule& rule = element.rules[static_cast<std::size_t>(distanceClass(nearest))];

    // Sums of w/R, times sin²(πR) and times sin(πR)·cos(πR).
    V sum = zero, sumSS = zero, sumSC = zero;
    for (std::size_t i = 0; i < rule.x.size(); ++i) {
      const V dx = px - V(rule.x[i]), xxzz = multiplyAdd(dx, dx, zz);
      V column = zero, columnSS = zero, columnSC = zero;
      for (std::size_t j = 0; j < rule.y.size(); ++j) {
        const V dy = py - V(rule.y[j]), square = multiplyAdd(dy, dy, xxzz);
        const V estimate = V::of(Set::inverseRootEstimate(square.value));
        const V root = square * estimate;
        const V error = multiplyAdd(-root, half * estimate, half);
        const V distance = multiplyAdd(root, error, root);
        const V w = V(rule.yWeights[j]) * multiplyAdd(estimate, error, estimate);

        const V r = distance - ((distance + roundsToIntegers) - roundsToIntegers), t = r * r;
        // Within 6e-7 and 1e-7.
        V sine = multiplyAdd(t, V(-0.554636141f), V(2.54189901f));
        V cosine = multiplyAdd(t, V(0.219696799f), V(-1.33188016f));
        sine = multiplyAdd(t, sine, V(-5.16714279f));
        cosine = multiplyAdd(t, cosine, V(4.05841192f));
        cosine = multiplyAdd(t, cosine, V(-4.93479286f));
        sine = r * multiplyAdd(t, sine, V(3.14158202f));
        cosine = multiplyAdd(t, cosine, one);

        const V weighted = w * sine;
        column = column + w;
        columnSS = multiplyAdd(weighted, sine, columnSS);
        columnSC = multiplyAdd(weighted, cosine, columnSC);
      }
      const V weight(rule.xWeights[i]);
      sum = multiplyAdd(weight, column, sum);
      sumSS = multiplyAdd(weight, columnSS, sumSS);
      sumSC = multiplyAdd(weight, columnSC, sumSC);
    }
    // Σ w/R·(cos 2πR − i·sin 2πR)
    const V valueRe = sum - (sumSS + sumSS), valueIm = -(sumSC + sumSC);
    multiplyAdd(factorRe, valueRe, multiplyAdd(-factorIm, valueIm, V::load(re + n))).store(re + n);
    multiplyAdd(factorRe, valueIm, multiplyAdd(factorIm, valueRe, V::load(im + n))).store(im + n);
  }
}

}  // namespace rayleigh
