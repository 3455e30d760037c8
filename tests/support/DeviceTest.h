#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <iostream>
#include <string>

#include "core/ErrorHandler.h"
#include "core/ThrowingErrorHandler.h"
#include "support/RecordingHandler.h"
#include "support/WithoutDevice.h"

#if !defined(CUDART_VERSION)
#include "emulation/TestControl.h"
#endif

namespace support {

/// A test on the device that the tests are built for. Each test starts with a reset device,
/// failures throw exceptions, and progress lines are captured.
class DeviceTest : public testing::Test {
 protected:
  void SetUp() override {
    int count = 0;
    if (cudaGetDeviceCount(&count) != cudaSuccess || count == 0) return skipWithoutDevice();
    pistonfield::ErrorHandler::setErrorHandler(new pistonfield::ThrowingErrorHandler);
    cudaDeviceReset();
    cudaGetLastError();
    testing::internal::CaptureStdout();
    capturing_ = true;
  }

  void TearDown() override {
    if (capturing_) output();
    cudaDeviceReset();
    pistonfield::ErrorHandler::setErrorHandler(nullptr);
  }

  /// What was written to standard output since the last call.
  std::string output() {
    capturing_ = false;
    std::string text = testing::internal::GetCapturedStdout();
    if (HasFailure()) std::cout << text;  // it includes the reports of failures
    return text;
  }
  void captureAgain() {
    testing::internal::CaptureStdout();
    capturing_ = true;
  }

 private:
  bool capturing_ = false;
};

#if !defined(CUDART_VERSION)
/// A test that makes the emulation device fail, give false answers or record calls. The device has
/// its own memory, like a GPU, since launchers would otherwise neither allocate nor copy.
class EmulationTest : public DeviceTest {
 protected:
  void SetUp() override {
    emulationTestControl()->restore();
    emulationTestControl()->separateMemory();
    DeviceTest::SetUp();
  }
  void TearDown() override {
    emulationTestControl()->restore();
    DeviceTest::TearDown();
  }
  pistonfield::emulation::TestControl& device = *emulationTestControl();
};
#endif

}  // namespace support
