#include <benchmark/benchmark.h>
#include <cuda_runtime.h>

#include <iostream>
#include <vector>

#include "core/DeviceBuffer.h"
#include "core/cudahelper.h"

// What a call costs besides its kernel: starting and releasing the device, and the copies.

namespace {

void startAndRelease(benchmark::State& state) {
  std::cout.setstate(std::ios::failbit);  // discards the lines about unknown devices
  for (auto _ : state) const pistonfield::CudaDeviceThread device;
  std::cout.clear();
}
BENCHMARK(startAndRelease)->UseRealTime()->Unit(benchmark::kMicrosecond);

#if defined(CUDART_VERSION)  // the emulation device works in the host's memory
/// Copies 12 bytes per point to the device and 8 bytes per point back.
void copies(benchmark::State& state) {
  const auto points = static_cast<std::size_t>(state.range(0));
  std::vector<char> positions(points * 12), pressures(points * 8);
  pistonfield::DeviceBuffer<char> d_pos, d_array;
  if (d_pos.allocate(positions.data(), positions.size()) != cudaSuccess ||
      d_array.allocate(pressures.data(), pressures.size()) != cudaSuccess) {
    state.SkipWithError("no device, or not enough of its memory");
    return;
  }
  for (auto _ : state) {
    d_pos.upload();
    d_array.download();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(points) * 20);
}
BENCHMARK(copies)->ArgName("points")->Arg(100000)->Arg(10000000)->UseRealTime()->Unit(
    benchmark::kMillisecond);
#endif

}  // namespace
