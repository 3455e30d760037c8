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

TEST_F(SharedContextTest, AScopeWithinAnotherLeavesTheContextToThatOne) {
  int* outers = nullptr;
  const int value = 42;
  int copy = 0;
  {
    const CudaDeviceThread outer;
    ASSERT_EQ(cudaMalloc(reinterpret_cast<void**>(&outers), sizeof *outers), cudaSuccess);
    ASSERT_EQ(cudaMemcpy(outers, &value, sizeof value, cudaMemcpyHostToDevice), cudaSuccess);
    { const CudaDeviceThread inner; }
    EXPECT_EQ(cudaMemcpy(&copy, outers, sizeof copy, cudaMemcpyDeviceToHost), cudaSuccess);
    EXPECT_EQ(copy, value);
  }
  EXPECT_NE(cudaMemcpy(&copy, outers, sizeof copy, cudaMemcpyDeviceToHost), cudaSuccess);
}

TEST_F(SharedContextTest, ACallByItselfLeavesNoContext) {
  int* left = nullptr;
  {
    const CudaDeviceThread scope;
    ASSERT_EQ(cudaMalloc(reinterpret_cast<void**>(&left), sizeof *left), cudaSuccess);
  }
  int copy = 0;
  EXPECT_NE(cudaMemcpy(&copy, left, sizeof copy, cudaMemcpyDeviceToHost), cudaSuccess);
}

}  // namespace
