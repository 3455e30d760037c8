#include <cstring>
#include <optional>
#include <stdexcept>

#include "core/cuda_init.h"
#include "core/cudahelper.h"
#include "support/DeviceTest.h"

using pistonfield::CudaDeviceThread;
using pistonfield::CudaInterface;
using pistonfield::emulation::Device;
using support::Failure;
using support::failureOf;

namespace {

Device pretended(int major, int minor, int multiProcessors, int clock) {
  Device device{};
  std::strcpy(device.properties.name, "pretended");
  device.properties.major = major;
  device.properties.minor = minor;
  device.properties.multiProcessorCount = multiProcessors;
  device.clockRate = clock;
  return device;
}

class CudaDeviceThreadTest : public support::EmulationTest {
 protected:
  /// The device that a call selects from these. `lines` receives what the call prints.
  int selectedAmong(const std::vector<Device>& devices) {
    device.pretendDevices(devices);
    const CudaDeviceThread scope;
    lines = output();
    captureAgain();
    return device.selectedDevice();
  }

  std::string lines;
};

TEST_F(CudaDeviceThreadTest, NoDeviceFailsAtTheStartUpCheck) {
  device.pretendDevices({});
  testing::internal::CaptureStderr();
  const Failure failure = failureOf([] { const CudaDeviceThread scope; });
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Cuda error: post cuda_init() in file 'src/core/cuda_init' in line 16 : "
            "no CUDA-capable device is detected.\n");
  EXPECT_EQ(failure.condition, "no CUDA-capable device is detected");
  EXPECT_EQ(failure.file, "src/core/cuda_init");
  EXPECT_EQ(failure.line, 16);
}

TEST_F(CudaDeviceThreadTest, NoDeviceRequestsDevice0) {
  device.pretendDevices({});
  device.recordCalls();
  testing::internal::CaptureStderr();
  failureOf([] { const CudaDeviceThread scope; });
  testing::internal::GetCapturedStderr();
  int requests = 0;
  for (const pistonfield::emulation::Call& call : device.calls())
    if (std::string(call.function) == "cudaSetDevice") {
      EXPECT_EQ(call.device, 0);
      ++requests;
    }
  EXPECT_EQ(requests, 1);
}

TEST_F(CudaDeviceThreadTest, SelectsStartsWaitsAndReleases) {
  device.recordCalls();
  { const CudaDeviceThread scope; }
  std::vector<std::string> functions;
  for (const pistonfield::emulation::Call& call : device.calls()) {
    functions.emplace_back(call.function);
    if (functions.back() == "cudaLaunchKernel") {
      EXPECT_EQ(call.grid.x * call.grid.y * call.grid.z, 1u);
      EXPECT_EQ(call.block.x * call.block.y * call.block.z, 1u);
    }
  }
  EXPECT_EQ(functions,
            (std::vector<std::string>{"cudaGetDeviceCount", "cudaGetDeviceProperties",
                                      "cudaGetDeviceProperties", "cudaDeviceGetAttribute",
                                      "cudaGetDevice", "cudaSetDevice", "cudaGetLastError",
                                      "cudaGetLastError", "cudaLaunchKernel", "cudaGetLastError",
                                      "cudaDeviceSynchronize", "cudaDeviceReset"}));
}

TEST_F(CudaDeviceThreadTest, OneDeviceIsSelected) {
  EXPECT_EQ(selectedAmong({pretended(1, 3, 30, 1300000)}), 0);
  EXPECT_EQ(lines, "");
}

TEST_F(CudaDeviceThreadTest, TheEmulationDeviceIsSelectedWithoutAWord) {
  const CudaDeviceThread scope;
  EXPECT_EQ(device.selectedDevice(), 0);
  EXPECT_EQ(output(), "");
  captureAgain();
}

TEST_F(CudaDeviceThreadTest, OfTwoEqualDevicesTheFirstIsSelected) {
  EXPECT_EQ(selectedAmong({pretended(1, 3, 30, 1300000), pretended(1, 3, 30, 1300000)}), 0);
  EXPECT_EQ(lines, "");
}

TEST_F(CudaDeviceThreadTest, TheFasterOfTwoEqualCapabilitiesIsSelected) {
  EXPECT_EQ(selectedAmong({pretended(1, 3, 30, 1300000), pretended(1, 3, 30, 1300001)}), 1);
}

TEST_F(CudaDeviceThreadTest, OfMajors1And2TheFastestIsSelectedWhateverItsMajor) {
  // 8·100·1.3e6 against 32·14·1.15e6 and 48·7·1.5e6
  EXPECT_EQ(selectedAmong({pretended(2, 0, 14, 1150000), pretended(1, 3, 100, 1300000),
                           pretended(2, 1, 7, 1500000)}),
            1);
  EXPECT_EQ(selectedAmong({pretended(1, 3, 30, 1300000), pretended(2, 0, 14, 1150000)}), 1);
  EXPECT_EQ(selectedAmong({pretended(2, 0, 10, 1000000), pretended(2, 1, 10, 1000000)}), 1);
  EXPECT_EQ(lines, "");
}

TEST_F(CudaDeviceThreadTest, EveryCapabilityHasItsNumberOfCores) {
  struct Capability {
    int major, minor, cores;
  };
  for (const auto& [major, minor, cores] :
       {Capability{1, 0, 8}, Capability{1, 1, 8}, Capability{1, 2, 8}, Capability{1, 3, 8},
        Capability{2, 0, 32}, Capability{2, 1, 48}}) {
    // Compared with a single core whose clock rate equals the sum of all, or is one step lower.
    const Device rated = pretended(major, minor, 1, 1);
    EXPECT_EQ(selectedAmong({pretended(9999, 9999, 1, cores - 1), rated}), 1) << major << minor;
    EXPECT_EQ(selectedAmong({pretended(9999, 9999, 1, cores), rated}), 0) << major << minor;
    EXPECT_EQ(lines, "");
  }
}

TEST_F(CudaDeviceThreadTest, Major3IsAboveTwo) {
  EXPECT_EQ(selectedAmong({pretended(1, 3, 30, 1300000), pretended(2, 0, 14, 1150000),
                           pretended(3, 5, 15, 900000)}),
            0);
  EXPECT_EQ(lines, "MapSMtoCores undefined SMversion 3.5!\n");
}

TEST_F(CudaDeviceThreadTest, OnlyMinor9999OfMajor9999IsAnEmulationDevice) {
  EXPECT_EQ(selectedAmong({pretended(2, 0, 1, 1), pretended(9999, 0, 100, 1000)}), 0);
  EXPECT_EQ(lines, "MapSMtoCores undefined SMversion 9999.0!\n");
}

TEST_F(CudaDeviceThreadTest, AMajorAboveTwoMakesDevice0TheResultAndIsNamed) {
  EXPECT_EQ(selectedAmong({pretended(1, 3, 30, 1300000), pretended(2, 0, 14, 1150000),
                           pretended(3, 5, 15, 900000), pretended(9, 0, 132, 1980000)}),
            0);
  EXPECT_EQ(lines,
            "MapSMtoCores undefined SMversion 3.5!\n"
            "MapSMtoCores undefined SMversion 9.0!\n");
}

TEST_F(CudaDeviceThreadTest, ADeviceMissingFromTheTableIsNamedAndPassedOver) {
  EXPECT_EQ(selectedAmong({pretended(1, 9, 100, 3000000), pretended(1, 0, 1, 1)}), 1);
  EXPECT_EQ(lines, "MapSMtoCores undefined SMversion 1.9!\n");
}

TEST_F(CudaDeviceThreadTest, PerformanceWrapsInto32SignedBits) {
  // 8·1000·10⁶ becomes negative.
  EXPECT_EQ(selectedAmong({pretended(1, 0, 1000, 1000000), pretended(1, 0, 1, 1)}), 1);
}

TEST_F(CudaDeviceThreadTest, AWrappedPerformanceCountsOnlyForTheNewestMajor) {
  // −1·2000·1.2e6 becomes positive.
  EXPECT_EQ(selectedAmong({pretended(1, 3, 30, 1300000), pretended(3, 0, 2000, 1200000)}), 1);
}

TEST_F(CudaDeviceThreadTest, WithoutAnyScoreDevice0IsSelected) {
  EXPECT_EQ(selectedAmong({pretended(1, 9, 10, 10), pretended(1, 8, 10, 10)}), 0);
  EXPECT_EQ(lines,
            "MapSMtoCores undefined SMversion 1.9!\n"
            "MapSMtoCores undefined SMversion 1.8!\n");
}

TEST_F(CudaDeviceThreadTest, AnEmulationDeviceCountsOneCoreAndDoesNotMakeTheOthersOld) {
  EXPECT_EQ(selectedAmong({pretended(9999, 9999, 2, 1000000), pretended(2, 0, 1, 1000000)}), 1);
  EXPECT_EQ(selectedAmong({pretended(9999, 9999, 64, 1000000), pretended(2, 0, 1, 1000000)}), 0);
  EXPECT_EQ(lines, "");
}

TEST_F(CudaDeviceThreadTest, TheScopeResetsTheDevice) {
  void* memory = nullptr;
  {
    const CudaDeviceThread scope;
    cudaMalloc(&memory, 16);
    EXPECT_EQ(device.liveAllocations(), 1u);
  }
  EXPECT_EQ(device.liveAllocations(), 0u);
}

TEST_F(CudaDeviceThreadTest, TheThreadsDeviceIsAfterwardsWhatItWas) {
  device.pretendDevices({pretended(1, 3, 10, 1300000), pretended(1, 3, 30, 1300000)});
  for (const int before : {0, 1}) {
    cudaSetDevice(before);
    device.recordCalls();
    {
      const CudaDeviceThread scope;
      EXPECT_EQ(device.selectedDevice(), 1);
    }
    EXPECT_EQ(device.selectedDevice(), before);
    // The reset comes first, while the call's device is current. It is the last call if the device
    // has not changed.
    const std::vector<pistonfield::emulation::Call> calls = device.calls();
    const std::size_t last = calls.size() - (before == 1 ? 1 : 2);
    EXPECT_EQ(std::string(calls[last].function), "cudaDeviceReset");
  }
}

TEST_F(CudaDeviceThreadTest, TheThreadsDeviceIsWhatItWasAfterAnErrorToo) {
  device.pretendDevices({pretended(1, 3, 10, 1300000), pretended(1, 3, 30, 1300000)});
  device.failCall("cudaDeviceReset", 1, cudaErrorUnknown, true);
  EXPECT_NE(failureOf([] { const CudaDeviceThread scope; }).condition, "");
  EXPECT_EQ(device.selectedDevice(), 0);
  EXPECT_THROW(
      {
        const CudaDeviceThread scope;
        throw std::domain_error("first");
      },
      std::domain_error);
  EXPECT_EQ(device.selectedDevice(), 0);
}

TEST_F(CudaDeviceThreadTest, AFailingStartStillResetsTheDevice) {
  device.failCall("cudaLaunchKernel", 1, cudaErrorLaunchFailure, false);
  device.recordCalls();
  testing::internal::CaptureStderr();
  const Failure failure = failureOf([] { const CudaDeviceThread scope; });
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Cuda error: post cuda_init() in file 'src/core/cuda_init' in line 16 : "
            "unspecified launch failure.\n");
  EXPECT_EQ(failure.condition, "unspecified launch failure");
  EXPECT_EQ(std::string(device.calls().back().function), "cudaDeviceReset");
}

TEST_F(CudaDeviceThreadTest, AHandlerThatReturnsIsToldOfTheFirstErrorToo) {
  std::vector<Failure> failures;
  pistonfield::ErrorHandler::setErrorHandler(new support::ReturningHandler(failures));
  device.failCall("cudaGetLastError", 2, cudaErrorInsufficientDriver, false);
  testing::internal::CaptureStderr();
  EXPECT_EQ(cuda_init(), cudaErrorInsufficientDriver);
  testing::internal::GetCapturedStderr();
  ASSERT_EQ(failures.size(), 1u);
  EXPECT_EQ(failures[0].line, 14);
}

TEST_F(CudaDeviceThreadTest, AnErrorOfAnEarlierCallIsForgotten) {
  cudaSetDevice(-1);
  EXPECT_EQ(failureOf([] { EXPECT_EQ(CudaInterface::init(), 0); }).condition, "");
}

TEST_F(CudaDeviceThreadTest, FailuresOfSelectionAndWaitAreNotChecked) {
  for (const char* function :
       {"cudaGetDeviceCount", "cudaGetDeviceProperties", "cudaGetDevice", "cudaSetDevice",
        "cudaDeviceSynchronize", "cudaDeviceGetAttribute"}) {
    device.restore();
    device.pretendDevices({pretended(1, 3, 10, 1300000), pretended(1, 3, 30, 1300000)});
    device.failCall(function, 1, cudaErrorUnknown, true);
    int selected = -1;
    const Failure failure = failureOf([&] {
      const CudaDeviceThread scope;
      selected = device.selectedDevice();
    });
    EXPECT_EQ(failure.condition, "") << function;
    const std::string name = function;
    const bool selects = name == "cudaDeviceSynchronize" || name == "cudaGetDevice";
    EXPECT_EQ(selected, selects ? 1 : 0) << function;
  }
}

TEST_F(CudaDeviceThreadTest, AFailingReleaseIsReportedInACallThatAnUnwindingErrorMakes) {
  // A host may make such a call while it cleans up after its own error.
  struct CallsAtItsEnd {
    std::string& condition;
    ~CallsAtItsEnd() {
      condition = failureOf([] { const CudaDeviceThread scope; }).condition;
    }
  };
  std::string condition;
  device.failCall("cudaDeviceReset", 1, cudaErrorUnknown, false);
  EXPECT_THROW(
      {
        const CallsAtItsEnd calls{condition};
        throw std::domain_error("first");
      },
      std::domain_error);
  EXPECT_EQ(condition, "Cuda error when calling cudaThreadExit(): unknown error");
}

TEST_F(CudaDeviceThreadTest, SyncReturnsTheRuntimesCode) {
  EXPECT_EQ(CudaInterface::sync(), cudaSuccess);
  device.failCall("cudaDeviceSynchronize", 1, cudaErrorLaunchFailure, false);
  EXPECT_EQ(CudaInterface::sync(), cudaErrorLaunchFailure);
}

TEST_F(CudaDeviceThreadTest, ListsTheDevices) {
  device.pretendDevices({pretended(1, 3, 30, 1300000), pretended(2, 0, 14, 1150000)});
  CudaInterface::dumpDevices();
  EXPECT_EQ(output(),
            "Device: 0 Processors 30 clockrate 1300000\n"
            "Device: 1 Processors 14 clockrate 1150000\n"
            "Total: 2 devices.\n");
  captureAgain();
}

TEST_F(CudaDeviceThreadTest, ListsNoDevice) {
  device.pretendDevices({});
  CudaInterface::dumpDevices();
  EXPECT_EQ(output(), "Total: 0 devices.\n");
  captureAgain();
}

}  // namespace
