#include "gateway/EmulatedGatewayTest.h"

// Two modules in one process. Each has an emulation device of its own.

namespace {

using NeighbourTest = EmulatedGatewayTest;

TEST_F(NeighbourTest, WhatAModuleHoldsOnItsDeviceSurvivesAnothersCalls) {
  void* held = nullptr;
  const int value = 42;
  ASSERT_EQ(device.allocate(&held, sizeof value), cudaSuccess);
  ASSERT_EQ(device.copy(held, &value, sizeof value, cudaMemcpyHostToDevice), cudaSuccess);

  const host::MexHost neighbour(hiddenModulePath());
  EXPECT_FALSE(neighbour.call(1, Arguments{}.first(7)).error);
  EXPECT_TRUE(neighbour.call(1, Arguments{}.first(4)).error);

  int back = 0;
  EXPECT_EQ(device.copy(&back, held, sizeof back, cudaMemcpyDeviceToHost), cudaSuccess);
  EXPECT_EQ(back, value);
}

}  // namespace
