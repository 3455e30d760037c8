#include "lanes/Avx512.h"

#include "FastNearfield/intervals/PistonInPacks.h"

// PistonInPacks.h, compiled for AVX-512.

namespace pistonfield {

void addPistonAvx512(const WeightedPiston& piston, const double* x, const double* y,
                     const double* z, int count, double* re, double* im, Used& used) {
  PistonInPacks<Avx512>(piston, used).add(x, y, z, count, re, im);
}

void addPistonAvx512SlowDivision(const WeightedPiston& piston, const double* x, const double* y,
                                 const double* z, int count, double* re, double* im, Used& used) {
  PistonInPacks<Avx512SlowDivision>(piston, used).add(x, y, z, count, re, im);
}

}  // namespace pistonfield
