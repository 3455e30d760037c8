#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <vector>

#include "FastNearfield/GaussLegendre.h"
#include "FastNearfield/RectangularPiston2.h"
#include "benchmarks/Fields.h"
#include "benchmarks/InTurns.h"
#include "benchmarks/KernelOnField.h"
#include "core/Progress.h"

// Compares the kernel, on one core or the GPU, with straightforward C++ code for the same formula
// and for the double sum over the piston, and compares the evaluation on the CPU with a literal
// loop. The tasks alternate.

namespace {

/// A straightforward implementation of the formula in single precision, one point at a time.
class ScalarPiston {
 public:
  explicit ScalarPiston(int order) : x_(static_cast<std::size_t>(order)), w_(x_.size()) {
    pistonfield::legendre_compute(order, x_.data(), w_.data());
  }

  std::complex<float> pressure(float x, float y, float z) const {
    const float u = std::fabs(x), v = std::fabs(y), a = fields::s / 2, b = fields::l / 2;
    const std::complex<float> sum = pair(u - a, u + a, v, b, z) + pair(v - b, v + b, u, a, z);
    return {sum.imag() * 0.15915494f, -sum.real() * 0.15915494f};
  }

 private:
  std::complex<float> pair(float d1, float d2, float offset, float half, float z) const {
    if (offset > half)
      return d1 * edge(d1, offset - half, offset + half, z) -
             d2 * edge(d2, offset - half, offset + half, z);
    return d1 * (edge(d1, 0, offset + half, z) + edge(d1, offset - half, 0, z)) -
           d2 * (edge(d2, 0, offset + half, z) + edge(d2, offset - half, 0, z));
  }

  std::complex<float> edge(float d, float lo, float hi, float z) const {
    const float h = (hi - lo) / 2, c = (hi + lo) / 2;
    const float e0re = std::cos(fields::k * z), e0im = -std::sin(fields::k * z);
    float re = 0, im = 0;
    for (std::size_t i = 0; i < x_.size(); ++i) {
      const float t = c + h * x_[i];
      const float D = d * d + t * t;
      const float phase = -fields::k * std::sqrt(z * z + D);
      re += w_[i] * h * (std::cos(phase) - e0re) / D;
      im += w_[i] * h * (std::sin(phase) - e0im) / D;
    }
    return {re, im};
  }

  std::vector<float> x_, w_;
};

/// How many times faster than `pressure(x, y, z)` the kernel is, per point, with a rule of this
/// order. `pressure` is timed on a cloud of `points` points.
template <class Pressure>
double timesFaster(benchmark::State& state, int order, int points, const Pressure& pressure) {
  KernelOnField kernel(fields::cloud(1000000));
  if (!kernel.isReady()) {
    state.SkipWithError(KernelOnField::notReady);
    return 0;
  }
  KernelOnField::setOrder(order);
  const std::vector<float> positions = fields::cloud(points);
  const auto prepare = [] {};
  fields::useCores(1);
  const std::vector<double> seconds =
      turns::seconds(state, {{prepare, [&] { kernel.run(); }},
                             {prepare, [&] {
                                for (std::size_t n = 0; n < positions.size(); n += 3)
                                  benchmark::DoNotOptimize(
                                      pressure(positions[n], positions[n + 1], positions[n + 2]));
                              }}});
  fields::useCores(0);
  return seconds[1] / points / (seconds[0] / kernel.points());
}

void toScalar(benchmark::State& state) {
  const auto order = static_cast<int>(state.range(0));
  const ScalarPiston piston(order);
  state.counters["ratio"] = timesFaster(
      state, order, 20000, [&](float x, float y, float z) { return piston.pressure(x, y, z); });
}
BENCHMARK(toScalar)->ArgName("order")->Arg(10)->Arg(64)->Apply(turns::compare);

/// (k/2π)·∬ exp(−ikR)/R dS as a sum over cells of the piston, in single precision.
std::complex<float> cellSum(int cellsAWavelength, float x, float y, float z) {
  const int across = 5 * cellsAWavelength, along = 15 * cellsAWavelength / 2;
  const float dx = fields::s / static_cast<float>(across),
              dy = fields::l / static_cast<float>(along);
  float re = 0, im = 0;
  for (int i = 0; i < across; ++i)
    for (int j = 0; j < along; ++j) {
      const float px = x + fields::s / 2 - (static_cast<float>(i) + 0.5f) * dx;
      const float py = y + fields::l / 2 - (static_cast<float>(j) + 0.5f) * dy;
      const float R = std::sqrt(px * px + py * py + z * z);
      re += std::cos(fields::k * R) / R;
      im -= std::sin(fields::k * R) / R;
    }
  const float factor = fields::k * dx * dy * 0.15915494f;
  return {re * factor, im * factor};
}

/// The error of the sum at some points of the cloud, relative to the largest pressure.
double cellSumError(int cellsAWavelength) {
  const std::vector<float> positions = fields::cloud(300);
  const ScalarPiston exact(64);
  double error = 0, peak = 0;
  for (std::size_t n = 0; n < positions.size(); n += 3) {
    const float x = positions[n], y = positions[n + 1], z = positions[n + 2];
    const std::complex<double> p = exact.pressure(x, y, z);
    const std::complex<double> q = cellSum(cellsAWavelength, x, y, z);
    peak = std::max(peak, std::abs(p));
    error = std::max(error, std::abs(p - q));
  }
  return error / peak;
}

/// Uses the smallest number of cells for which the error is at most 1e-3.
void toDoubleSum(benchmark::State& state) {
  static const int cells = [] {
    int enough = 2;
    while (cellSumError(enough) > 1e-3) enough += 2;
    return enough;
  }();
  state.counters["ratio"] = timesFaster(
      state, 10, 100, [](float x, float y, float z) { return cellSum(cells, x, y, z); });
  state.counters["error"] = cellSumError(cells);
}
BENCHMARK(toDoubleSum)->Apply(turns::compare);

constexpr int side = 16;
constexpr int cpuOrder = 100;

pistonfield::Grid3DR<double> cpuGrid() {
  pistonfield::MVector<double, 3> origin, spacing;
  const double first[3] = {-fields::s, -fields::l, fields::wavelength};
  const double last[3] = {fields::s, fields::l, 15.0 * fields::wavelength};
  for (int axis = 0; axis < 3; ++axis) {
    origin[axis] = first[axis];
    spacing[axis] = (last[axis] - first[axis]) / (side - 1);
  }
  return {side, side, side, origin, spacing};
}

std::int64_t cpuNodes() {
  std::vector<float> positions;
  const pistonfield::Grid3DR<double> grid = cpuGrid();
  for (unsigned n = 0; n < grid.nbPositions(); ++n) {
    pistonfield::MVector<double, 3> p = grid.getPosition(static_cast<int>(n));
    for (int axis = 0; axis < 3; ++axis) positions.push_back(static_cast<float>(p[axis]));
  }
  return fields::nodes(positions, cpuOrder);
}

/// The sum over a rule's nodes with the library's complex exponential and division.
template <class T>
class LiteralSum {
 public:
  LiteralSum() : x_(cpuOrder), w_(cpuOrder) {
    pistonfield::legendre_compute(cpuOrder, x_.data(), w_.data());
  }

  std::complex<T> operator()(T d) const {
    using C = std::complex<T>;
    const T k = static_cast<T>(fields::k), z = static_cast<T>(5 * fields::wavelength);
    const T half = static_cast<T>(fields::l) / 2;
    const C expKz = std::exp(C(0, -z * k));
    C sum;
    for (std::size_t n = 0; n < cpuOrder; ++n) {
      const T t = half * x_[n] * half * x_[n] + d * d;
      const T r = std::sqrt(z * z + t);
      sum += w_[n] * half * ((std::exp(C(0, -r * k)) - expKz) / t);
    }
    return sum;
  }

 private:
  std::vector<T> x_, w_;
};

template <class T>
void cpuToLiteral(benchmark::State& state) {
  const pistonfield::RectangularPistonCuda2 piston(fields::l, fields::s, fields::k);
  const pistonfield::Grid3DR<double> grid = cpuGrid();
  std::vector<T> out(std::size_t{2} * grid.nbPositions());
  const LiteralSum<T> literalSum;
  T d = static_cast<T>(fields::wavelength);
  pistonfield::showProgress(false);
  const auto prepare = [] {};
  fields::useCores(1);
  const std::vector<double> seconds =
      turns::seconds(state, {{prepare, [&] { piston.computeCPU(out.data(), grid); }},
                             {prepare, [&] {
                                benchmark::DoNotOptimize(literalSum(d));
                                d = -d;
                                benchmark::DoNotOptimize(d);
                              }}});
  fields::useCores(0);
  state.counters["ratio"] = seconds[1] / cpuOrder / (seconds[0] / static_cast<double>(cpuNodes()));
}
BENCHMARK_TEMPLATE(cpuToLiteral, float)->Apply(turns::compare);
BENCHMARK_TEMPLATE(cpuToLiteral, double)->Apply(turns::compare);

}  // namespace
