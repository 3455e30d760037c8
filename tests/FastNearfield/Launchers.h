#pragma once

#include <complex>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/PressuresAt.h"
#include "FastNearfield/RectangularPistonCuda.dp.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "FastNearfield/TestGrids.h"
#include "support/DeviceTest.h"
#include "support/GuardedVector.h"

// Calls every launcher for the same points of a grid and a piston with sides a = 2 along y and b =
// 4 along x. The result arrays have guarded margins.

namespace launchers {

using pistonfield::Complex;
using pistonfield::Complexd;
using support::GuardedVector;
using test_grids::Size;
using test_grids::transform;

/// Results in single or double precision, converted exactly.
using Values = std::vector<std::complex<double>>;

template <class T>
Values widened(const std::vector<pistonfield::ComplexPair<T>>& pairs) {
  Values values;
  values.reserve(pairs.size());
  for (const auto& p : pairs) values.emplace_back(p.re, p.im);
  return values;
}

template <class T>
Values joined(const std::vector<T>& re, const std::vector<T>& im) {
  Values values;
  for (std::size_t i = 0; i < re.size(); ++i) values.emplace_back(re[i], im[i]);
  return values;
}

constexpr Size small{17, 3, 3};
constexpr float a = 2, b = 4, k = 5;

/// What maps a grid's indices to its points: a transform, axes, or steps from the centre.
enum class Map { TRANSFORM, AXES, STEPS };

/// The coordinates along an axis of a grid.
inline std::vector<float> axis(int size, float step, float start) {
  std::vector<float> values(static_cast<std::size_t>(size));
  for (int i = 0; i < size; ++i)
    values[static_cast<std::size_t>(i)] = static_cast<float>(i) * step + start;
  return values;
}

inline std::vector<float> gridPositions(const Size& size, Map map) {
  if (map == Map::TRANSFORM) return test_grids::transformedPositions(size);
  const float placed = map == Map::AXES ? 1 : 0;
  std::vector<float> positions;
  for (const float z : axis(size.sz, 2, placed))
    for (const float y : axis(size.sy, 0.25f, placed * 0.5f))
      for (const float x : axis(size.sx, 0.5f, -placed))
        positions.insert(positions.end(), {x, y, z});
  return positions;
}

inline Values list(const Size& size, Map map) {
  std::vector<float> positions = gridPositions(size, map);
  GuardedVector<Complex> data(size.points());
  RectangularPiston_func_unstructured(data.data(), static_cast<int>(size.points()),
                                      positions.data(), a, b, k);
  return widened(data.read());
}

inline Values unstructured(const Size& size) { return list(size, Map::AXES); }

/// The launcher for lists of points in double precision.
inline Values doubles(const Size& size) {
  const std::vector<float> positions = gridPositions(size, Map::AXES);
  const std::vector<double> points(positions.begin(), positions.end());
  GuardedVector<double> re(size.points()), im(size.points());
  pistonfield::pressuresAt(points.data(), static_cast<int>(size.points()), a, b, k, re.data(),
                           im.data());
  return joined(re.read(), im.read());
}

inline Values grid(const Size& size) {
  GuardedVector<Complex> data(size.points());
  RectangularPiston_func(data.data(), size.sx, size.sy, size.sz, transform, a, b, k);
  return widened(data.read());
}

inline Values split(const Size& size) {
  GuardedVector<float> re(size.points()), im(size.points());
  RectangularPiston_func2(re.data(), im.data(), size.sx, size.sy, size.sz, transform, a, b, k);
  return joined(re.read(), im.read());
}

inline Values structured(const Size& size) {
  std::vector<float> x = axis(size.sx, 0.5f, -1), y = axis(size.sy, 0.25f, 0.5f),
                     z = axis(size.sz, 2, 1);
  GuardedVector<Complex> data(size.points());
  RectangularPiston_func_structured(data.data(), size.sx, size.sy, size.sz, x.data(), y.data(),
                                    z.data(), a, b, k);
  return widened(data.read());
}

inline Values twelveScalars(const Size& size) {
  const float* const t = transform;
  GuardedVector<Complex> data(size.points());
  do_calculate_grid(data.data(), size.sx, size.sy, size.sz, t[0], t[1], t[2], t[3], t[4], t[5],
                    t[6], t[7], t[8], t[9], t[10], t[11], a, b, k);
  return widened(data.read());
}

inline Values fromCentre(const Size& size) {
  GuardedVector<Complex> data(size.points());
  do_calculate(data.data(), size.sx, size.sy, size.sz, 0.5f, 0.25f, 2, a, b, k);
  return widened(data.read());
}

inline std::vector<double> doubleTransform() { return {transform, transform + 16}; }

inline Values grid_d(const Size& size) {
  std::vector<double> t = doubleTransform();
  GuardedVector<Complexd> data(size.points());
  RectangularPiston_func_d(data.data(), size.sx, size.sy, size.sz, t.data(), a, b, k);
  return widened(data.read());
}

inline Values split_d(const Size& size) {
  std::vector<double> t = doubleTransform();
  GuardedVector<double> re(size.points()), im(size.points());
  RectangularPiston_func2_d(re.data(), im.data(), size.sx, size.sy, size.sz, t.data(), a, b, k);
  return joined(re.read(), im.read());
}

inline Values twelveScalars_d(const Size& size) {
  const float* const t = transform;
  GuardedVector<Complexd> data(size.points());
  do_calculate_grid_d(data.data(), size.sx, size.sy, size.sz, t[0], t[1], t[2], t[3], t[4], t[5],
                      t[6], t[7], t[8], t[9], t[10], t[11], a, b, k);
  return widened(data.read());
}

inline Values fromCentre_d(const Size& size) {
  GuardedVector<Complexd> data(size.points());
  do_calculate_d(data.data(), size.sx, size.sy, size.sz, 0.5, 0.25, 2, a, b, k);
  return widened(data.read());
}

#if !defined(CUDART_VERSION)
/// A test with a rule loaded and timing off.
class Test : public support::EmulationTest {
 protected:
  void SetUp() override {
    EmulationTest::SetUp();
    startAfresh();
  }
  void TearDown() override {
    do_timing = 0;
    EmulationTest::TearDown();
  }

  enum class Memory { SEPARATE, HOSTS };

  void startAfresh(Memory memory = Memory::SEPARATE) {
    device.restore();
    if (memory == Memory::SEPARATE) device.separateMemory();
    do_timing = 0;
    setCudaIntegratorParameters("RectangularPiston", 10);
    printed();
  }
};
#endif

}  // namespace launchers
