#include "FastNearfield/intervals/PistonsOnDevice.h"
#include "core/CudaCompatibility.h"
#include "core/DeviceUse.h"
#include "core/cudahelper.h"
#include "support/DeviceTest.h"

using pistonfield::contextIsActive;
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

TEST_F(SharedContextTest, AKeptDeviceStaysStartedUntilItIsReleased) {
  ASSERT_FALSE(contextIsActive(0));
  pistonfield::keepDevices();
  { const CudaDeviceThread scope; }
  EXPECT_TRUE(contextIsActive(0));
  { const CudaDeviceThread scope; }
  EXPECT_TRUE(contextIsActive(0));
  pistonfield::releaseKeptDevices();
  EXPECT_FALSE(contextIsActive(0));
}

TEST_F(SharedContextTest, WhatAFieldStartsStaysStartedUntilItIsReleased) {
  ASSERT_FALSE(contextIsActive(0));
  EXPECT_TRUE(pistonfield::isGpuForPistons());
  { const CudaDeviceThread scope; }
  EXPECT_TRUE(contextIsActive(0));
  pistonfield::releaseKeptDevices();
  EXPECT_FALSE(contextIsActive(0));
  EXPECT_TRUE(pistonfield::isGpuForPistons());  // starts again
  pistonfield::releaseKeptDevices();
}

}  // namespace
