#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <iostream>
#include <vector>

#include "FastNearfield/GaussLegendre.h"
#include "FastNearfield/RectangularPiston2.h"
#include "benchmarks/Fields.h"

// What the kernel is compared with, on one core: the same formula and the plain double sum as one
// would write them down in C++, and the evaluation on the CPU with its literal loop.

namespace {

/// The method as it is written, in single precision, one point after the other.
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

void scalar(benchmark::State& state) {
  const std::vector<float> positions = fields::cloud(20000);
  const auto order = static_cast<int>(state.range(0));
  const ScalarPiston piston(order);
  for (auto _ : state)
    for (std::size_t n = 0; n < positions.size(); n += 3)
      benchmark::DoNotOptimize(
          piston.pressure(positions[n], positions[n + 1], positions[n + 2]));
  state.SetItemsProcessed(state.iterations() * fields::nodes(positions, order));
  const std::size_t points = positions.size() / 3;
  state.counters["points"] = static_cast<double>(points);
}
BENCHMARK(scalar)->ArgName("order")->Arg(10)->Arg(64)->Unit(benchmark::kMillisecond);

/// (k/2π)·∬ exp(−ikR)/R dS as the sum over cells of the piston, in single precision.
std::complex<float> cellSum(int cellsAWavelength, float x, float y, float z) {
  const int across = 5 * cellsAWavelength, along = 15 * cellsAWavelength / 2;
  const float dx = fields::s / static_cast<float>(across), dy = fields::l / static_cast<float>(along);
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

/// The error of the sum over the largest pressure, at some points of the cloud.
double cellSumError(int cellsAWavelength) {
  const std::vector<float> positions = fields::cloud(300);
  const ScalarPiston exact(64);
  double error = 0, peak = 0;
  for (std::size_t n = 0; n < positions.size(); n += 3) {
    const float x = positions[n], y = positions[n + 1], z = positions[n + 2];
    const std::complex<double> p = exact.pressure(x, y, z);
    const std::complex<double> q =
        cellSum(cellsAWavelength, x, y, z);
    peak = std::max(peak, std::abs(p));
    error = std::max(error, std::abs(p - q));
  }
  return error / peak;
}

/// With the fewest cells whose error stays below 1e-3.
void doubleSum(benchmark::State& state) {
  int cells = 2;
  while (cellSumError(cells) > 1e-3) cells += 2;
  const std::vector<float> positions = fields::cloud(100);
  for (auto _ : state)
    for (std::size_t n = 0; n < positions.size(); n += 3)
      benchmark::DoNotOptimize(cellSum(cells, positions[n], positions[n + 1], positions[n + 2]));
  const std::size_t points = positions.size() / 3;
  state.counters["points"] = static_cast<double>(points);
  state.counters["cells_a_wavelength"] = cells;
  state.counters["error"] = cellSumError(cells);
}
BENCHMARK(doubleSum)->Unit(benchmark::kMillisecond);

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

template <class T>
void cpuEvaluation(benchmark::State& state) {
  const pistonfield::RectangularPistonCuda2 piston(fields::l, fields::s, fields::k);
  const pistonfield::Grid3DR<double> grid = cpuGrid();
  std::vector<T> out(std::size_t{2} * grid.nbPositions());
  std::cout.setstate(std::ios::failbit);  // the progress lines
  for (auto _ : state) piston.computeCPU(out.data(), grid);
  std::cout.clear();
  state.SetItemsProcessed(state.iterations() * cpuNodes());
}
BENCHMARK_TEMPLATE(cpuEvaluation, float)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(cpuEvaluation, double)->Unit(benchmark::kMillisecond);

/// The sum over a rule's nodes with the library's complex exponential and division.
template <class T>
void cpuLiteral(benchmark::State& state) {
  using C = std::complex<T>;
  std::vector<T> x(cpuOrder), w(cpuOrder);
  pistonfield::legendre_compute(cpuOrder, x.data(), w.data());
  const T k = static_cast<T>(fields::k), z = static_cast<T>(5 * fields::wavelength);
  const T half = static_cast<T>(fields::l) / 2;
  const C expKz = std::exp(C(0, -z * k));
  T d = static_cast<T>(fields::wavelength);
  for (auto _ : state) {
    C sum;
    for (int i = 0; i < cpuOrder; ++i) {
      const auto n = static_cast<std::size_t>(i);
      const T t = half * x[n] * half * x[n] + d * d;
      const T r = std::sqrt(z * z + t);
      sum += w[n] * half * ((std::exp(C(0, -r * k)) - expKz) / t);
    }
    benchmark::DoNotOptimize(sum);
    d = -d;
    benchmark::DoNotOptimize(d);
  }
  state.SetItemsProcessed(state.iterations() * cpuOrder);
}
BENCHMARK_TEMPLATE(cpuLiteral, float);
BENCHMARK_TEMPLATE(cpuLiteral, double);

}  // namespace
