#include <cuda_runtime.h>
#include <pistonfield/FastNearfield/IntegratorCuda.h>
#include <pistonfield/FastNearfield/RectangularPiston2.h>
#include <pistonfield/core/ThrowingErrorHandler.h>
#include <pistonfield/core/cudahelper.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

// A program that uses a real CUDA runtime and computes a field with the emulation device. The two
// must not interfere.

__global__ void number(unsigned* threads) { threads[threadIdx.x] = threadIdx.x; }

namespace {

int failures = 0;

void expect(bool condition, const char* what) {
  if (condition) return;
  std::printf("%s\n", what);
  ++failures;
}

/// Checks that this program calls the real runtime, and prints its answer.
std::string answers() {
  int version = 0;
  cudaRuntimeGetVersion(&version);
  expect(version == CUDART_VERSION, "the runtime is not the toolkit's");
  int devices = 0;
  const cudaError_t error = cudaGetDeviceCount(&devices);
  std::string text = std::to_string(devices) + " " + cudaGetErrorName(error);
  for (int device = 0; device < devices; ++device) {
    cudaDeviceProp properties{};
    cudaGetDeviceProperties(&properties, device);
    expect(properties.major < 9999, "the runtime shows the emulation device");
    text += std::string(" ") + properties.name;
  }
  unsigned* threads = nullptr;
  const cudaError_t allocated = cudaMalloc(&threads, 32 * sizeof(unsigned));
  expect((allocated == cudaSuccess) == (devices > 0), "there is device memory without a device");
  if (allocated == cudaSuccess) number<<<1, 32>>>(threads);
  return text;
}

float largest() {
  const pistonfield::CudaDeviceThread device;
  setCudaIntegratorParameters("RectangularPiston", 20);
  const pistonfield::RectangularPistonCuda2 piston(7.5, 5, 6.2831853);
  const pistonfield::Grid3DR<double> grid(
      61, 1, 100, {0.125, 0, 0, -3.75, 0, 1, 0, 0, 0, 0, 0.25, 0.25, 0, 0, 0, 1});
  std::vector<float> p(std::size_t{2} * grid.nbPositions());
  piston.compute(p.data(), grid);
  float most = 0;
  for (std::size_t i = 0; i < p.size(); i += 2) most = std::max(most, std::hypot(p[i], p[i + 1]));
  return most;
}

}  // namespace

int main() {
  pistonfield::ErrorHandler::setErrorHandler(new pistonfield::ThrowingErrorHandler);
  const std::string before = answers();
  const float peak = largest();
  expect(1 < peak && peak < 2.5F, "the field is wrong");
  expect(answers() == before, "the runtime's answers have changed");
  std::printf("runtime %d: %s; peak %.3f\n", CUDART_VERSION, before.c_str(), peak);
  return failures > 0 ? 1 : 0;
}
