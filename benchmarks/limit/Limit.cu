#include <cuda_runtime.h>

#include <cstdlib>
#include <iostream>

#include "benchmarks/limit/IntegrandSum.h"
#include "benchmarks/limit/Limit.h"

namespace {

constexpr int rounds = 500;
constexpr int blocks = 8192, threads = 128;

__global__ void evaluateIntegrand(float z, bool ahead, float* sink) {
  const auto sum = limit::integrandSum(z, 1 + static_cast<float>(threadIdx.x), rounds, ahead);
  if (sum.re + sum.im == 12345.0f) *sink = sum.re;  // never true, but the compiler cannot know
}

}  // namespace

std::int64_t limit::integrandOnly(bool ahead) {
  static float* sink = nullptr;
  if (!sink) cudaMalloc(reinterpret_cast<void**>(&sink), sizeof(float));
  evaluateIntegrand<<<blocks, threads>>>(1.0f, ahead, sink);
  if (cudaDeviceSynchronize() != cudaSuccess) {
    std::cerr << "the integrand's kernel failed\n";
    std::exit(1);
  }
  return std::int64_t{4} * rounds * blocks * threads;
}
