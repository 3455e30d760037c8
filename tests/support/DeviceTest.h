#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <iostream>
#include <string>
#include <vector>

#include "core/ErrorHandler.h"
#include "core/ThrowingErrorHandler.h"
#include "support/RecordingHandler.h"
#include "support/WithoutDevice.h"

#if !defined(CUDART_VERSION)
#include "emulation/TestControl.h"
#endif

namespace support {

/// failureOf(call), without what it writes on standard error: a stage's label.
template <class Call>
Failure quietFailureOf(Call call) {
  testing::internal::CaptureStderr();
  Failure failure = failureOf(call);
  testing::internal::GetCapturedStderr();
  return failure;
}

/// A test that runs on the device the tests are built for: a fresh device, failures thrown,
/// progress lines kept off the screen.
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

  /// What standard output has received since the last time.
  std::string printed() {
    std::string text = output();
    testing::internal::CaptureStdout();
    capturing_ = true;
    return text;
  }

 private:
  /// The same, once: nothing catches what follows.
  std::string output() {
    capturing_ = false;
    std::string text = testing::internal::GetCapturedStdout();
    if (HasFailure()) std::cout << text;  // it includes the reports of failures
    return text;
  }

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
  /// The runtime's functions that were called since `recordCalls`.
  std::vector<std::string> functionsCalled() const {
    std::vector<std::string> functions;
    for (const pistonfield::emulation::Call& call : device.calls())
      functions.emplace_back(call.function);
    return functions;
  }

  pistonfield::emulation::TestControl& device = *emulationTestControl();
};
#endif

}  // namespace support
