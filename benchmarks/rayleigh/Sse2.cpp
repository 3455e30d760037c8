#include "lanes/Sse2.h"

#include "benchmarks/rayleigh/ElementInPacks.h"

namespace {

struct WithRoots : pistonfield::Sse2 {
  static Register inverseRootEstimate(Register x) { return _mm_rsqrt_ps(x); }
};

}  // namespace

void rayleigh::addElementSse2(const Element& element, const float* x, const float* y,
                              const float* z, int count, float* re, float* im) {
  addElement<WithRoots>(element, x, y, z, count, re, im);
}
