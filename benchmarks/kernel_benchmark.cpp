#include <benchmark/benchmark.h>
#include <cuda_runtime.h>

#include <iostream>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "benchmarks/Fields.h"
#include "benchmarks/limit/Limit.h"
#include "core/DeviceBuffer.h"

// The kernel for a list of points, on buffers that are there, against the integrand alone. The rate
// is that of the integrand's values: nodes a second.

namespace {

using pistonfield::Complex;
using pistonfield::DeviceBuffer;

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
  const std::vector<float> positions = layOut(static_cast<int>(state.range(0)));
  const auto points = static_cast<int>(positions.size() / 3);
  const auto order = static_cast<int>(state.range(1));
  fields::useCores(static_cast<int>(state.range(2)));
  std::cout.setstate(std::ios::failbit);  // the progress lines

  DeviceBuffer<float> d_pos;
  DeviceBuffer<Complex> d_array;
  const std::size_t bytes = positions.size() * sizeof(float);
  if (d_pos.allocate(bytes) != cudaSuccess ||
      d_array.allocate(static_cast<std::size_t>(points) * sizeof(Complex)) != cudaSuccess ||
      cudaMemcpy(d_pos.get(), positions.data(), bytes, cudaMemcpyHostToDevice) != cudaSuccess) {
    state.SkipWithError("no device, or not enough of its memory");
  } else {
    setCudaIntegratorParameters("RectangularPiston", order);
    const auto launch = [&] {
      RectangularPiston_func_unstructured_device(d_array.get(), points, d_pos.get(), fields::l,
                                                 fields::s, fields::k);
      cudaDeviceSynchronize();
    };
    launch();  // the first touch of the buffers
    for (auto _ : state) launch();
    state.SetItemsProcessed(state.iterations() * fields::nodes(positions, order));
    state.counters["points"] = points;
  }
  std::cout.clear();
  fields::useCores(0);
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
