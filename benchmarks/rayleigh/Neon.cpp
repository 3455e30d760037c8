#include "lanes/Neon.h"

#include "benchmarks/rayleigh/ElementInPacks.h"

namespace {

struct WithRoots : pistonfield::Neon {
  static Register inverseRootEstimate(Register x) {
    const Register estimate = vrsqrteq_f32(x);
    return estimate * vrsqrtsq_f32(x * estimate, estimate);
  }
};

}  // namespace

void rayleigh::addElementNeon(const Element& element, const float* x, const float* y,
                              const float* z, int count, float* re, float* im) {
  addElement<WithRoots>(element, x, y, z, count, re, im);
}
