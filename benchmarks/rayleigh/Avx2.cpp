#include "lanes/Avx2.h"

#include "benchmarks/rayleigh/ElementInPacks.h"

namespace {

struct WithRoots : pistonfield::Avx2 {
  static Register inverseRootEstimate(Register x) { return _mm256_rsqrt_ps(x); }
};

}  // namespace

void rayleigh::addElementAvx2(const Element& element, const float* x, const float* y,
                              const float* z, int count, float* re, float* im) {
  addElement<WithRoots>(element, x, y, z, count, re, im);
}
