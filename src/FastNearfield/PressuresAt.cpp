#include "FastNearfield/PressuresAt.h"

#include <cstddef>
#include <cstdint>
#include <memory>

#include "FastNearfield/RectangularPistonCuda.h"
#include "core/CudaCompatibility.h"
#include "parallel/Spread.h"

namespace pistonfield {
namespace {

// The fewest points that a core converts at once.
constexpr std::uint64_t pointsAtOnce = 1 << 14;

std::unique_ptr<float[]> narrowed(const double* points, std::size_t count) {
  std::unique_ptr<float[]> positions(new float[3 * count]);
  parallel::spread(count, pointsAtOnce, [&](std::size_t first, std::size_t last) {
    for (std::size_t i = 3 * first; i < 3 * last; ++i) positions[i] = static_cast<float>(points[i]);
  });
  return positions;
}

void widen(const Complex* pressures, std::size_t count, double* re, double* im) {
  parallel::spread(count, pointsAtOnce, [&](std::size_t first, std::size_t last) {
    for (std::size_t i = first; i < last; ++i) {
      re[i] = pressures[i].re;
      im[i] = pressures[i].im;
    }
  });
}

}  // namespace

void pressuresAt(const double* points, int count, float l, float s, float k, double* re,
                 double* im) {
  if (usesHostMemory()) return pressuresInHostMemory(points, count, l, s, k, re, im);
  const auto size = static_cast<std::size_t>(count);
  const std::unique_ptr<float[]> positions = narrowed(points, size);
  const std::unique_ptr<Complex[]> pressures(new Complex[size]);
  RectangularPiston_func_unstructured(pressures.get(), count, positions.get(), l, s, k);
  widen(pressures.get(), size, re, im);
}

}  // namespace pistonfield
