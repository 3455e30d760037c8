#include "core/cudahelper.h"
#include "support/DeviceTest.h"

using pistonfield::CudaDeviceThread;

namespace {

class SharedContextTest : public support::DeviceTest {};

TEST_F(SharedContextTest, WhatOthersHoldOnTheDeviceSurvivesACall) {
  int* others = nullptr;
  const int value = 42;
  ASSERT_EQ(cudaMalloc(reinterpret_cast<void**>(&others), sizeof value), cudaSuccess);
  ASSERT_EQ(cudaMemcpy(others, &value, sizeof value, cudaMemcpyHostToDevice), cudaSuccess);
  { const CudaDeviceThread scope; }
  int copy = 0;
  EXPECT_EQ(cudaMemcpy(&copy, others, sizeof copy, cudaMemcpyDeviceToHost), cudaSuccess);
  EXPECT_EQ(copy, value);
}

}  // namespace
