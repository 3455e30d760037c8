#include "lanes/Avx512.h"

#include "benchmarks/rayleigh/ElementInPacks.h"

namespace {

struct WithRoots : pistonfield::Avx512 {
  static Register inverseRootEstimate(Register x) { return _mm512_rsqrt14_ps(x); }
};

}  // namespace

void rayleigh::addElementAvx512(const Element& element, const float* x, const float* y,
                                const float* z, int count, float* re, float* im) {
  addElement<WithRoots>(element, x, y, z, count, re, im);
}
