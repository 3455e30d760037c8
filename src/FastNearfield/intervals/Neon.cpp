#include "lanes/Neon.h"

#include "FastNearfield/intervals/PistonInPacks.h"

// PistonInPacks.h, compiled for NEON.

namespace pistonfield {

void addPistonNeon(const WeightedPiston& piston, const double* x, const double* y, const double* z,
                   int count, double* re, double* im, Used& used) {
  PistonInPacks<Neon>(piston, used).add(x, y, z, count, re, im);
}

}  // namespace pistonfield
