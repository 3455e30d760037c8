#pragma once

#include <complex>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPistonCuda.dp.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "support/DeviceTest.h"

// Every launcher on the same grid of 17 × 3 × 3 points, for a piston of sides a = 2 along y and b =
// 4 along x.

namespace launchers {

using pistonfield::Complex;
using pistonfield::Complexd;

/// Results of either precision, exactly.
using Values = std::vector<std::complex<double>>;

template <class T>
Values widened(const std::vector<pistonfield::ComplexPair<T>>& pairs) {
  Values values;
  for (const auto& p : pairs) values.emplace_back(p.re, p.im);
  return values;
}

template <class T>
Values joined(const std::vector<T>& re, const std::vector<T>& im) {
  Values values;
  for (std::size_t i = 0; i < re.size(); ++i) values.emplace_back(re[i], im[i]);
  return values;
}

constexpr int sx = 17, sy = 3, sz = 3, points = sx * sy * sz;
constexpr float a = 2, b = 4, k = 5;

inline float transform[16] = {0.5f, 0, 0, -1, 0, 0.25f, 0, 0.5f, 0, 0, 2, 1, 0, 0, 0, 1};

/// Where the grid starts: do_calculate has no way to place it.
enum class Origin { PLACED, CENTRE };

inline std::vector<float> gridPositions(Origin origin) {
  const bool placed = origin == Origin::PLACED;
  std::vector<float> positions;
  for (int l = 0; l < sz; ++l)
    for (int j = 0; j < sy; ++j)
      for (int i = 0; i < sx; ++i) {
        positions.push_back(static_cast<float>(i) * 0.5f - (placed ? 1.0f : 0.0f));
        positions.push_back(static_cast<float>(j) * 0.25f + (placed ? 0.5f : 0.0f));
        positions.push_back(static_cast<float>(l) * 2 + (placed ? 1.0f : 0.0f));
      }
  return positions;
}

inline Values list(Origin origin) {
  std::vector<float> positions = gridPositions(origin);
  std::vector<Complex> data(points);
  RectangularPiston_func_unstructured(data.data(), points, positions.data(), a, b, k);
  return widened(data);
}

inline Values unstructured() { return list(Origin::PLACED); }

inline Values grid() {
  std::vector<Complex> data(points);
  RectangularPiston_func(data.data(), sx, sy, sz, transform, a, b, k);
  return widened(data);
}

inline Values split() {
  std::vector<float> re(points), im(points);
  RectangularPiston_func2(re.data(), im.data(), sx, sy, sz, transform, a, b, k);
  return joined(re, im);
}

inline Values structured() {
  float x[sx], y[sy] = {0.5f, 0.75f, 1}, z[sz] = {1, 3, 5};
  for (int i = 0; i < sx; ++i) x[i] = static_cast<float>(i) * 0.5f - 1;
  std::vector<Complex> data(points);
  RectangularPiston_func_structured(data.data(), sx, sy, sz, x, y, z, a, b, k);
  return widened(data);
}

inline Values twelveScalars() {
  const float* const t = transform;
  std::vector<Complex> data(points);
  do_calculate_grid(data.data(), sx, sy, sz, t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8],
                    t[9], t[10], t[11], a, b, k);
  return widened(data);
}

inline Values fromCentre() {
  std::vector<Complex> data(points);
  do_calculate(data.data(), sx, sy, sz, 0.5f, 0.25f, 2, a, b, k);
  return widened(data);
}

inline std::vector<double> doubleTransform() { return {transform, transform + 16}; }

inline Values grid_d() {
  std::vector<double> t = doubleTransform();
  std::vector<Complexd> data(points);
  RectangularPiston_func_d(data.data(), sx, sy, sz, t.data(), a, b, k);
  return widened(data);
}

inline Values split_d() {
  std::vector<double> t = doubleTransform();
  std::vector<double> re(points), im(points);
  RectangularPiston_func2_d(re.data(), im.data(), sx, sy, sz, t.data(), a, b, k);
  return joined(re, im);
}

inline Values twelveScalars_d() {
  const float* const t = transform;
  std::vector<Complexd> data(points);
  do_calculate_grid_d(data.data(), sx, sy, sz, t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8],
                      t[9], t[10], t[11], a, b, k);
  return widened(data);
}

inline Values fromCentre_d() {
  std::vector<Complexd> data(points);
  do_calculate_d(data.data(), sx, sy, sz, 0.5, 0.25, 2, a, b, k);
  return widened(data);
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

  void startAfresh() {
    device.restore();
    do_timing = 0;
    setCudaIntegratorParameters("RectangularPiston", 10);
    printed();
  }

  std::string printed() {
    std::string text = output();
    captureAgain();
    return text;
  }
};
#endif

}  // namespace launchers
