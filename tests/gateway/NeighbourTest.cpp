#include <cuda_runtime.h>

#include "gateway/GatewayTest.h"

// Two modules in one process. Each has an emulation device of its own.

namespace {

using NeighbourTest = GatewayTest;

TEST_F(NeighbourTest, WhatAModuleHoldsOnItsDeviceSurvivesAnothersCalls) {
  const auto allocate = reinterpret_cast<decltype(&cudaMalloc)>(module.symbol("cudaMalloc"));
  const auto copy = reinterpret_cast<decltype(&cudaMemcpy)>(module.symbol("cudaMemcpy"));
  void* held = nullptr;
  const int value = 42;
  ASSERT_EQ(allocate(&held, sizeof value), cudaSuccess);
  ASSERT_EQ(copy(held, &value, sizeof value, cudaMemcpyHostToDevice), cudaSuccess);

  const host::MexHost neighbour(hiddenModulePath());
  EXPECT_FALSE(neighbour.call(1, Arguments{}.first(7)).error);
  EXPECT_TRUE(neighbour.call(1, Arguments{}.first(4)).error);

  int back = 0;
  EXPECT_EQ(copy(&back, held, sizeof back, cudaMemcpyDeviceToHost), cudaSuccess);
  EXPECT_EQ(back, value);
}

}  // namespace
