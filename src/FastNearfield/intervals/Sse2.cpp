#include "lanes/Sse2.h"

#include "FastNearfield/intervals/PistonInPacks.h"

// PistonInPacks.h, compiled for SSE2.

namespace pistonfield {

void addPistonSse2(const WeightedPiston& piston, const double* x, const double* y, const double* z,
                   int count, double* re, double* im, Used& used) {
  PistonInPacks<Sse2>(piston, used).add(x, y, z, count, re, im);
}

}  // namespace pistonfield
