#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include "core/DeviceUse.h"
#include "core/cuda_init.h"
#include "core/cudahelper.h"

// What a call does to devices that other code uses. The runtime is a fake with two devices, linked
// in place of the toolkit's. It has only the functions that CudaDeviceThread calls and needs no
// GPU.

namespace {

/// Which devices have a context, and which device is the thread's current one.
struct Runtime {
  bool active[2] = {};
  int current = 0;
  int resets = 0;
  bool isBroken = false;  // whether a kernel failed
} runtime;

int primaryContextState(int device, unsigned* flags, int* active) {
  *flags = 0;
  *active = runtime.active[device] ? 1 : 0;
  return 0;
}

}  // namespace

extern "C" {

cudaError_t cudaGetDeviceCount(int* count) {
  *count = 2;
  return cudaSuccess;
}

cudaError_t cudaGetDeviceProperties(cudaDeviceProp* properties, int /*device*/) {
  *properties = {};
  properties->major = 9;  // so that device 0 is the fastest
  return cudaSuccess;
}

cudaError_t cudaDeviceGetAttribute(int* value, cudaDeviceAttr /*attribute*/, int /*device*/) {
  *value = 1;
  return cudaSuccess;
}

cudaError_t cudaGetDevice(int* device) {
  *device = runtime.current;
  return cudaSuccess;
}

/// Starts the device's context, as runtimes from 12 on do.
cudaError_t cudaSetDevice(int device) {
  runtime.current = device;
  runtime.active[device] = true;
  return cudaSuccess;
}

cudaError_t cudaDeviceReset() {
  runtime.active[runtime.current] = false;
  ++runtime.resets;
  return cudaSuccess;
}

#if CUDART_VERSION >= 12050
cudaError_t cudaGetDriverEntryPointByVersion(const char* symbol, void** function, unsigned,
                                             unsigned long long, cudaDriverEntryPointQueryResult*) {
#elif CUDART_VERSION >= 12000
cudaError_t cudaGetDriverEntryPoint(const char* symbol, void** function, unsigned long long,
                                    cudaDriverEntryPointQueryResult*) {
#else
cudaError_t cudaGetDriverEntryPoint(const char* symbol, void** function, unsigned long long) {
#endif
  EXPECT_STREQ(symbol, "cuDevicePrimaryCtxGetState");
  *function = reinterpret_cast<void*>(&primaryContextState);
  return cudaSuccess;
}

cudaError_t cudaDeviceSynchronize() {
  return runtime.isBroken ? cudaErrorLaunchFailure : cudaSuccess;
}

cudaError_t cudaGetLastError() { return cudaSuccess; }
const char* cudaGetErrorString(cudaError_t) { return "no error"; }
cudaError_t cudaMemcpyToSymbol(const void*, const void*, size_t, size_t, cudaMemcpyKind) {
  return cudaErrorInvalidSymbol;
}

int cuda_init() { return 0; }
cudaError_t cuda_sync() { return cudaSuccess; }
}

namespace {

using pistonfield::CudaDeviceThread;

class DeviceScopeTest : public testing::Test {
 protected:
  void SetUp() override {
    runtime = {};
    testing::internal::CaptureStdout();
  }
  void TearDown() override {
    pistonfield::releaseKeptDevices();
    testing::internal::GetCapturedStdout();
  }
};

TEST_F(DeviceScopeTest, ACallByItselfLeavesNoContext) {
  { const CudaDeviceThread scope; }
  EXPECT_EQ(runtime.resets, 1);
  EXPECT_FALSE(runtime.active[0]);
  EXPECT_FALSE(runtime.active[1]);
}

TEST_F(DeviceScopeTest, AContextOfOthersStays) {
  runtime.active[0] = true;
  { const CudaDeviceThread scope; }
  EXPECT_EQ(runtime.resets, 0);
  EXPECT_TRUE(runtime.active[0]);
}

TEST_F(DeviceScopeTest, AScopeWithinAnotherChangesNothingForThatOne) {
  {
    const CudaDeviceThread outer;
    { const CudaDeviceThread inner; }
    EXPECT_TRUE(runtime.active[0]);  // the outer scope still uses it
  }
  EXPECT_EQ(runtime.resets, 1);
  EXPECT_FALSE(runtime.active[0]);
}

TEST_F(DeviceScopeTest, AScopeKnowsOfItsOwnDeviceOnly) {
  cudaSetDevice(1);
  { const CudaDeviceThread scope; }
  EXPECT_EQ(runtime.current, 1);
  EXPECT_EQ(runtime.resets, 1);
  EXPECT_FALSE(runtime.active[0]);
  EXPECT_TRUE(runtime.active[1]);
}

TEST_F(DeviceScopeTest, AKeptDeviceStaysStartedUntilItIsReleased) {
  pistonfield::keepDevices();
  for (int n = 0; n < 3; ++n) {
    { const CudaDeviceThread scope; }
    EXPECT_EQ(runtime.resets, 0);
    EXPECT_TRUE(runtime.active[0]);
  }
  pistonfield::releaseKeptDevices();
  EXPECT_EQ(runtime.resets, 1);
  EXPECT_FALSE(runtime.active[0]);
  { const CudaDeviceThread scope; }
  EXPECT_EQ(runtime.resets, 2);  // as if nothing had been kept
  pistonfield::releaseKeptDevices();
  EXPECT_EQ(runtime.resets, 2);
}

TEST_F(DeviceScopeTest, AContextOfOthersIsNotReleased) {
  runtime.active[0] = true;
  pistonfield::keepDevices();
  pistonfield::keepCurrentDevice();
  { const CudaDeviceThread scope; }
  pistonfield::releaseKeptDevices();
  EXPECT_EQ(runtime.resets, 0);
  EXPECT_TRUE(runtime.active[0]);
}

TEST_F(DeviceScopeTest, AKeptDeviceWhoseKernelFailedIsReset) {
  pistonfield::keepDevices();
  { const CudaDeviceThread scope; }
  runtime.isBroken = true;
  { const CudaDeviceThread scope; }
  EXPECT_EQ(runtime.resets, 1);
  EXPECT_FALSE(runtime.active[0]);
  runtime.isBroken = false;
  { const CudaDeviceThread scope; }
  EXPECT_EQ(runtime.resets, 1);
}

TEST_F(DeviceScopeTest, WhatAFieldStartsStaysThroughACallAndIsReleased) {
  pistonfield::keepCurrentDevice();
  runtime.active[0] = true;  // by the field's work
  { const CudaDeviceThread scope; }
  EXPECT_EQ(runtime.resets, 0);
  pistonfield::releaseKeptDevices();
  EXPECT_EQ(runtime.resets, 1);
}

TEST_F(DeviceScopeTest, TheReleaseLeavesTheCurrentDeviceAndItsContext) {
  cudaSetDevice(1);
  pistonfield::keepDevices();
  { const CudaDeviceThread scope; }
  pistonfield::releaseKeptDevices();
  EXPECT_EQ(runtime.current, 1);
  EXPECT_FALSE(runtime.active[0]);
  EXPECT_TRUE(runtime.active[1]);
}

}  // namespace
