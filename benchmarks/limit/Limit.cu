#include <cuda_runtime.h>

#include <cstdlib>
#include <iostream>

#include "FastNearfield/PointPressure.h"
#include "benchmarks/limit/Limit.h"

namespace {

constexpr int rounds = 500;
constexpr int blocks = 8192, threads = 128;

/// The integrand at d² + σ² for one σ after the other, four at a time, as in a kernel's loop: from
/// registers and into registers.
__global__ void evaluateIntegrand(float z, float dd, float* sink) {
  const pistonfield::HalfAngleIntegrand<float> f(z, 7.0f);
  pistonfield::Complex first{0, 0}, second{0, 0};
  const auto at = [&](float sigma) { return f.at(dd + sigma * sigma); };
  float sigma = static_cast<float>(threadIdx.x);
  for (int n = 0; n < rounds; ++n) {
    first = first + (at(sigma) + at(sigma + 0.001f));
    second = second + (at(sigma + 0.002f) + at(sigma + 0.003f));
    sigma += 0.004f;
  }
  const float sum = first.re + first.im + second.re + second.im;
  if (sum == 12345.0f) *sink = sum;  // never, but the compiler cannot know
}

}  // namespace

std::int64_t limit::integrandOnly() {
  static float* sink = nullptr;
  if (!sink) cudaMalloc(reinterpret_cast<void**>(&sink), sizeof(float));
  evaluateIntegrand<<<blocks, threads>>>(1.0f, 0.25f, sink);
  if (cudaDeviceSynchronize() != cudaSuccess) {
    std::cerr << "the integrand's kernel failed\n";
    std::exit(1);
  }
  return std::int64_t{4} * rounds * blocks * threads;
}
