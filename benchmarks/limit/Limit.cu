#include <cuda_runtime.h>

#include <cstdlib>
#include <iostream>

#include "FastNearfield/PointPressure.h"
#include "benchmarks/limit/Limit.h"

namespace {

constexpr int rounds = 500;
constexpr int blocks = 8192, threads = 128;

/// Four values at a time, as in a kernel's loop, from registers and into registers.
__global__ void evaluateIntegrand(float z, float start, float* sink) {
  const pistonfield::HalfAngleIntegrand<float> f(z, 7.0f);
  pistonfield::Complex first{0, 0}, second{0, 0};
  float D = start + static_cast<float>(threadIdx.x);
  for (int n = 0; n < rounds; ++n) {
    first = first + (f.at(D) + f.at(D + 0.001f));
    second = second + (f.at(D + 0.002f) + f.at(D + 0.003f));
    D += 0.004f;
  }
  const float sum = first.re + first.im + second.re + second.im;
  if (sum == 12345.0f) *sink = sum;  // never, but the compiler cannot know
}

}  // namespace

std::int64_t limit::integrandOnly() {
  static float* sink = nullptr;
  if (!sink) cudaMalloc(reinterpret_cast<void**>(&sink), sizeof(float));
  evaluateIntegrand<<<blocks, threads>>>(1.0f, 1.0f, sink);
  if (cudaDeviceSynchronize() != cudaSuccess) {
    std::cerr << "the integrand's kernel failed\n";
    std::exit(1);
  }
  return std::int64_t{4} * rounds * blocks * threads;
}
