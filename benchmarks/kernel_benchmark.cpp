#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "benchmarks/Fields.h"
#include "benchmarks/KernelOnField.h"
#include "benchmarks/limit/Limit.h"

// Times the kernel for a list of points, and the integrand alone. The reported rate is the number
// of evaluations of the integrand, or nodes, per second.

namespace {

void limitOfNodes(benchmark::State& state, bool ahead) {
  fields::useCores(1);
  std::int64_t nodes = 0;
  for (auto _ : state) nodes += limit::integrandOnly(ahead);
  fields::useCores(0);
  state.SetItemsProcessed(nodes);
}
BENCHMARK_CAPTURE(limitOfNodes, plain, false)->Name("limit/plain")->UseRealTime();
BENCHMARK_CAPTURE(limitOfNodes, ahead, true)->Name("limit/ahead")->UseRealTime();

/// points, order, cores (0: all)
void kernel(benchmark::State& state, std::vector<float> (*layOut)(int)) {
  KernelOnField kernel(layOut(static_cast<int>(state.range(0))));
  const auto order = static_cast<int>(state.range(1));
  if (!kernel.isReady()) return state.SkipWithError(KernelOnField::notReady);
  fields::useCores(static_cast<int>(state.range(2)));
  KernelOnField::setOrder(order);
  for (auto _ : state) kernel.run();
  fields::useCores(0);
  state.SetItemsProcessed(state.iterations() * kernel.nodes(order));
  state.counters["points"] = kernel.points();
}

void sweep(benchmark::internal::Benchmark* b) {
  b->UseRealTime()->Unit(benchmark::kMillisecond)->ArgNames({"points", "order", "cores"});
  for (const int cores : {1, 0})
    for (const int order : {10, 20, 64})
      for (const int points : {1000, 10000, 100000, 1000000, 10000000})
        b->Args({points, order, cores});
  for (const int order : {32, 128, 256}) b->Args({100000, order, 1});
}
BENCHMARK_CAPTURE(kernel, cloud, fields::cloud)->Apply(sweep);
BENCHMARK_CAPTURE(kernel, grid, fields::grid)->Apply(sweep);

}  // namespace
