#include <benchmark/benchmark.h>
#include <cuda_runtime.h>

#include <iostream>
#include <vector>

#include "core/DeviceBuffer.h"
#include "core/cudahelper.h"

// What a call pays beside its kernel: start and release of the device, and the copies.

namespace {

void startAndRelease(benchmark::State& state) {
  std::cout.setstate(std::ios::failbit);  // what it says of unknown devices
  for (auto _ : state) const pistonfield::CudaDeviceThread device;
  std::cout.clear();
}
BENCHMARK(startAndRelease)->UseRealTime()->Unit(benchmark::kMicrosecond);

/// The bytes of so many points: 12 to the device, 8 back.
void copies(benchmark::State& state) {
  const auto points = static_cast<std::size_t>(state.range(0));
  std::vector<char> host(points * 12);
  pistonfield::DeviceBuffer<char> device;
  if (device.allocate(host.size()) != cudaSuccess) {
    state.SkipWithError("no device, or not enough of its memory");
    return;
  }
  for (auto _ : state) {
    cudaMemcpy(device.get(), host.data(), points * 12, cudaMemcpyHostToDevice);
    cudaMemcpy(host.data(), device.get(), points * 8, cudaMemcpyDeviceToHost);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(points) * 20);
}
BENCHMARK(copies)->ArgName("points")->Arg(100000)->Arg(10000000)->UseRealTime()->Unit(
    benchmark::kMillisecond);

}  // namespace
