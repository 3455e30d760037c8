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
    lines = printed();
    return device.selectedDevice();
  }

  std::string lines;
};

TEST_F(CudaDeviceThreadTest, NoDeviceRequestsDevice0) {
  device.pretendDevices({});
  device.recordCalls();
  support::quietFailureOf([] { const CudaDeviceThread scope; });
  int requests = 0;
  for (const pistonfield::emulation::Call& call : device.calls())
    if (std::string(call.function) == "cudaSetDevice") {
      EXPECT_EQ(call.device, 0);
      ++requests;
    }
  EXPECT_EQ(requests, 1);
}

TEST_F(CudaDeviceThreadTest, TheFastestDeviceIsSelectedByTheRulesOfItsTime) {
  struct Choice {
    std::vector<Device> devices;
    int selected;
    std::vector<std::string> unknown;
  };
  const Device old = pretended(1, 3, 30, 1300000), fermi = pretended(2, 0, 14, 1150000),
               slow = pretended(1, 0, 1, 1);
  for (const Choice& choice : std::vector<Choice>{
           {{old}, 0, {}},
           {{old, old}, 0, {}},
           {{old, pretended(1, 3, 30, 1300001)}, 1, {}},
           // Of majors 1 and 2 whatever their major: 8·100·1.3e6 against 32·14·1.15e6, 48·7·1.5e6.
           {{fermi, pretended(1, 3, 100, 1300000), pretended(2, 1, 7, 1500000)}, 1, {}},
           {{old, fermi}, 1, {}},
           {{pretended(2, 0, 10, 1000000), pretended(2, 1, 10, 1000000)}, 1, {}},
           // A major above 2 makes device 0 the result, and is named.
           {{old, fermi, pretended(3, 5, 15, 900000)}, 0, {"3.5"}},
           {{old, fermi, pretended(3, 5, 15, 900000), pretended(9, 0, 132, 1980000)},
            0,
            {"3.5", "9.0"}},
           {{pretended(2, 0, 1, 1), pretended(9999, 0, 100, 1000)}, 0, {"9999.0"}},
           // One that is missing from the table is passed over.
           {{pretended(1, 9, 100, 3000000), slow}, 1, {"1.9"}},
           {{pretended(1, 9, 10, 10), pretended(1, 8, 10, 10)}, 0, {"1.9", "1.8"}},
           // 8·1000·10⁶ becomes negative in 32 signed bits, and −1·2000·1.2e6 positive, which
           // counts only for the newest major.
           {{pretended(1, 0, 1000, 1000000), slow}, 1, {}},
           {{old, pretended(3, 0, 2000, 1200000)}, 1, {"3.0"}},
           // An emulation device counts one core, and does not make the others old.
           {{pretended(9999, 9999, 2, 1000000), pretended(2, 0, 1, 1000000)}, 1, {}},
           {{pretended(9999, 9999, 64, 1000000), pretended(2, 0, 1, 1000000)}, 0, {}},
       }) {
    std::string expected, names;
    for (const std::string& version : choice.unknown)
      expected += "MapSMtoCores undefined SMversion " + version + "!\n";
    for (const Device& one : choice.devices)
      names += std::to_string(one.properties.major) + "." + std::to_string(one.properties.minor) +
               " ×" + std::to_string(one.properties.multiProcessorCount) + " ";
    // The text of a failure would stand among the next lines.
    ASSERT_EQ(selectedAmong(choice.devices), choice.selected) << names;
    ASSERT_EQ(lines, expected) << names;
  }
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
    ASSERT_EQ(selectedAmong({pretended(9999, 9999, 1, cores - 1), rated}), 1) << major << minor;
    ASSERT_EQ(selectedAmong({pretended(9999, 9999, 1, cores), rated}), 0) << major << minor;
    ASSERT_EQ(lines, "");
  }
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
  EXPECT_EQ(printed(),
            "Device: 0 Processors 30 clockrate 1300000\n"
            "Device: 1 Processors 14 clockrate 1150000\n"
            "Total: 2 devices.\n");
  device.pretendDevices({});
  CudaInterface::dumpDevices();
  EXPECT_EQ(printed(), "Total: 0 devices.\n");
}

}  // namespace
