#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "benchmarks/Fields.h"
#include "benchmarks/InTurns.h"
#include "benchmarks/KernelOnField.h"
#include "benchmarks/limit/Limit.h"

// Compares the kernel for a list of points with the integrand alone, with itself on one core, and
// with itself at other numbers of points and other orders. The tasks alternate.

namespace {

using Field = std::vector<float>(int points);

/// The exponent e in y ~ at^e, by a least-squares fit to the logarithms.
double exponent(const std::vector<double>& at, const std::vector<double>& y) {
  const auto n = static_cast<double>(at.size());
  double sx = 0, sy = 0, sxx = 0, sxy = 0;
  for (std::size_t i = 0; i < at.size(); ++i) {
    const double u = std::log(at[i]), v = std::log(y[i]);
    sx += u;
    sy += v;
    sxx += u * u;
    sxy += u * v;
  }
  return (n * sxy - sx * sy) / (n * sxx - sx * sx);
}

/// The nodes per second of the kernel relative to those of the integrand alone on one core or the
/// GPU. Arguments: points, order, cores (0: all).
void toIntegrand(benchmark::State& state, Field* layOut) {
  KernelOnField kernel(layOut(static_cast<int>(state.range(0))));
  if (!kernel.isReady()) return state.SkipWithError(KernelOnField::notReady);
  const auto order = static_cast<int>(state.range(1));
  const auto cores = static_cast<int>(state.range(2));
  KernelOnField::setOrder(order);
  std::int64_t limitNodes = 0;
  const auto useOne = [] { fields::useCores(1); };
  const std::vector<double> seconds =
      turns::seconds(state, {{[&] { fields::useCores(cores); }, [&] { kernel.run(); }},
                             {useOne, [&] { limitNodes = limit::integrandOnly(false); }},
                             {useOne, [&] { limitNodes = limit::integrandOnly(true); }}});
  fields::useCores(0);
  const double share = static_cast<double>(kernel.nodes(order)) / static_cast<double>(limitNodes);
  state.counters["ratio"] = share * seconds[1] / seconds[0];
  state.counters["ahead"] = share * seconds[2] / seconds[0];
}

/// The speed on all cores relative to the mean speed of the single cores. All cores are measured,
/// since other load may slow some of them more than others.
void ofCores(benchmark::State& state, Field* layOut) {
  KernelOnField kernel(layOut(1000000));
  if (!kernel.isReady()) return state.SkipWithError(KernelOnField::notReady);
  KernelOnField::setOrder(10);
  const auto run = [&] { kernel.run(); };
  std::vector<turns::Work> works;
  for (int core = 0; core < fields::cores(); ++core) {
    works.push_back({[] { fields::useCores(0); }, run});
    works.push_back({[core] { fields::useCores(1, core); }, run});
  }
  const std::vector<double> seconds = turns::seconds(state, works);
  fields::useCores(0);
  double all = 0, alone = 0;
  for (std::size_t n = 0; n < seconds.size(); n += 2) {
    all += 1 / seconds[n];
    alone += 1 / seconds[n + 1];
  }
  state.counters["ratio"] = all / alone;
}

/// Reports e, where the time on one core grows as the number of points to the power e.
void growthWithPoints(benchmark::State& state, Field* layOut) {
  KernelOnField kernels[] = {KernelOnField(layOut(100000)), KernelOnField(layOut(1000000)),
                             KernelOnField(layOut(10000000))};
  std::vector<double> points;
  std::vector<turns::Work> works;
  for (KernelOnField& kernel : kernels) {
    if (!kernel.isReady()) return state.SkipWithError(KernelOnField::notReady);
    points.push_back(kernel.points());
    works.push_back({[] {}, [&kernel] { kernel.run(); }});
  }
  KernelOnField::setOrder(10);
  fields::useCores(1);
  state.counters["ratio"] = exponent(points, turns::seconds(state, works));
  fields::useCores(0);
}

/// The same for the growth with the order.
void growthWithOrder(benchmark::State& state, Field* layOut) {
  KernelOnField kernel(layOut(100000));
  if (!kernel.isReady()) return state.SkipWithError(KernelOnField::notReady);
  fields::useCores(1);
  const std::vector<double> orders = {10, 20, 32, 64, 128, 256};
  std::vector<turns::Work> works;
  works.reserve(orders.size());
  for (const double order : orders)
    works.push_back({[order] { KernelOnField::setOrder(static_cast<int>(order)); },
                     [&kernel] { kernel.run(); }});
  state.counters["ratio"] = exponent(orders, turns::seconds(state, works));
  fields::useCores(0);
}

void onOneCore(benchmark::internal::Benchmark* b) {
  b->ArgNames({"points", "order", "cores"});
  for (const int order : {10, 20, 64}) b->Args({1000000, order, 1});
}

BENCHMARK_CAPTURE(toIntegrand, cloud, fields::cloud)
    ->Apply(turns::compare)
    ->Apply(onOneCore)
    ->Args({10000000, 10, 0});
BENCHMARK_CAPTURE(toIntegrand, grid, fields::grid)->Apply(turns::compare)->Apply(onOneCore);
BENCHMARK_CAPTURE(ofCores, cloud, fields::cloud)->Apply(turns::compare);
BENCHMARK_CAPTURE(ofCores, grid, fields::grid)->Apply(turns::compare);
BENCHMARK_CAPTURE(growthWithPoints, cloud, fields::cloud)->Apply(turns::compare);
BENCHMARK_CAPTURE(growthWithOrder, cloud, fields::cloud)->Apply(turns::compare)->MinTime(1);
BENCHMARK_CAPTURE(growthWithOrder, grid, fields::grid)->Apply(turns::compare)->MinTime(1);

}  // namespace
