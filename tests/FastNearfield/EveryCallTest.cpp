#include "support/EveryCall.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "FastNearfield/Ways.h"

using launchers::Values;
using pistonfield::CudaInterface;
using support::CheckSite;
using support::Ending;
using support::EveryCall;
using ways::Way;

// Every call of the runtime fails that the system makes, below its C++ interface.

namespace {

/// Throws every failure, like the hosts' handlers, and keeps it.
class KeepingHandler : public pistonfield::ThrowingErrorHandler {
 public:
  explicit KeepingHandler(std::vector<Ending::Report>& reports) : reports_(reports) {}
  void fail(const char* condition, int line, const char* file) override {
    reports_.push_back({condition, line, file});
    ThrowingErrorHandler::fail(condition, line, file);
  }

 private:
  std::vector<Ending::Report>& reports_;
};

class EveryCallTest : public launchers::Test {
 protected:
  Ending endingOf(const Way& way) {
    Ending ending;
    pistonfield::ErrorHandler::setErrorHandler(new KeepingHandler(ending.reports));
    testing::internal::CaptureStderr();
    try {
      ending.values = way.call();
    } catch (const pistonfield::Error&) {  // which the handler has kept
    } catch (const ways::Interruption&) {
      ending.otherError = "interrupted";
    }
    ending.standardError = testing::internal::GetCapturedStderr();
    ending.outputs = {printed()};
    return ending;
  }

  void failEachOf(const Way& way) {
    for (const int timing : {0, 1}) {
      const auto start = [=] {
        startAfresh();
        do_timing = timing;
      };
      // Each call of a host starts the device anew.
      everyCall.failEach({[&] { return endingOf(way); }, start, [] { CudaInterface::init(); },
                          way.releasesSilently});
    }
  }

  EveryCall everyCall{device};
};

class EveryCallOfTest : public EveryCallTest, public testing::WithParamInterface<Way> {};

TEST_P(EveryCallOfTest, FailsAsOneReportAndLeavesNothing) { failEachOf(GetParam()); }

INSTANTIATE_TEST_SUITE_P(All, EveryCallOfTest, testing::ValuesIn(ways::all),
                         [](const auto& way) { return way.param.name; });

TEST_F(EveryCallTest, AModelThatTheDeviceDoesNotKnowIsReportedWithWhateverTheRuntimeSays) {
  const float x[] = {0.577350f}, w[] = {1};
  const auto conditionOf = [&] {
    return support::failureOf([&] { setIntegratorWeightsSym("Triangle", x, w, 2); }).condition;
  };
  const std::string report =
      "Cuda error when calling cudaMemcpyToSymbol( buf, data_x, datasize ): ";
  EXPECT_EQ(conditionOf(), report + "invalid device symbol");
  startAfresh();
  device.failCall("cudaMemcpyToSymbol", 1, cudaErrorUnknown, false);
  EXPECT_EQ(conditionOf(), report + "unknown error");
}

TEST_F(EveryCallTest, WithoutDoublePrecisionNoMoreIsAskedOfTheRuntime) {
  const Values expected = ways::wholeCallWithOrder();
  device.recordCalls();
  ways::wholeCallWithOrder();
  int before = 0;
  for (const emulation::Call& call : device.calls()) {
    ++before;
    if (std::string(call.function) == "cudaMemcpyToSymbol") break;
  }
  device.failCall("cudaMemcpyToSymbol", 1, cudaErrorInvalidSymbol, false);
  device.failCall("", before + 1, cudaErrorUnknown, false);  // that the error is forgotten
  testing::internal::CaptureStderr();
  EXPECT_TRUE(ways::wholeCallWithOrder() == expected);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Support for double not found\n");
}

TEST_F(EveryCallTest, AListOfTheDevicesIsAsLongAsTheRuntimeLetsIt) {
  for (const char* function : {"cudaGetDeviceCount", "cudaGetDeviceProperties"}) {
    startAfresh();
    device.failCall(function, 1, cudaErrorUnknown, true);
    EXPECT_EQ(support::failureOf([] { CudaInterface::dumpDevices(); }).condition, "");
    EXPECT_NE(printed().find("Total: "), std::string::npos);
  }
}

/// A call that stands in no check, as uncheckedCalls() says it, and what it asks of the runtime.
struct Unchecked {
  const char* call;
  const char* function;
};

// What is only compiled for CUDA asks nothing of the emulation device, and cannot fail there: the
// look for a context that somebody else has made.
constexpr const char* nothingHere = "";
// This one has no way to fail.
constexpr const char* neverFails = "";
// This one is no call of these modules'.
constexpr const char* anotherModule = "";

const std::vector<Unchecked> unchecked = {
    // The start of every call and its end.
    {"core/CudaCheck.h cudaGetLastError", neverFails},
    {"core/CudaStorage.cpp cudaFree", "cudaFree"},
    {"core/FastestDevice.cpp cudaGetDeviceCount", "cudaGetDeviceCount"},
    {"core/FastestDevice.cpp cudaGetDeviceProperties", "cudaGetDeviceProperties"},
    {"core/CudaToday.cpp cudaDeviceGetAttribute", "cudaDeviceGetAttribute"},
    {"core/CudaToday.cpp cudaGetDriverEntryPoint", nothingHere},
    {"core/CudaToday.cpp cudaGetDriverEntryPoint", nothingHere},
    {"core/CudaToday.cpp cudaGetDriverEntryPointByVersion", nothingHere},
    {"core/CudaToday.cpp cudaGetDevice", "cudaGetDevice"},
    {"core/CudaToday.cpp cudaSetDevice", "cudaSetDevice"},
    {"core/CudaToday.cpp cudaSetDevice", "cudaSetDevice"},
    {"core/cuda_init.cu cudaGetLastError", "cudaGetLastError"},
    {"core/cuda_init.cu launch", "cudaLaunchKernel"},
    {"core/cuda_init.cu cudaThreadSynchronize", "cudaDeviceSynchronize"},
    {"core/CudaToday.cpp cudaDeviceReset", "cudaDeviceReset"},
    {"core/cudahelper.cpp cudaThreadEnter", "cudaSetDevice"},
    {"core/cudahelper.cpp cudaThreadExit", "cudaDeviceReset"},
    // The list of the devices.
    {"core/cudahelper.cpp cudaGetDeviceCount", "cudaGetDeviceCount"},
    {"core/cudahelper.cpp cudaGetDeviceProperties", "cudaGetDeviceProperties"},
    // What checks and their calls are made of.
    {"core/CudaCheck.cpp cudaGetErrorString", neverFails},
    {"core/CudaCheck.cpp cudaGetErrorString", neverFails},
    {"core/CudaCheck.cpp cudaGetLastError", "cudaGetLastError"},
    {"core/CudaToday.h cudaDeviceSynchronize", "cudaDeviceSynchronize"},
    {"core/CudaToday.h cudaLaunchKernel", "cudaLaunchKernel"},
    {"core/CudaToday.h cudaMemcpyToSymbol", "cudaMemcpyToSymbol"},
    {"core/DeviceBuffer.h cudaFree", "cudaFree"},
    {"core/DeviceBuffer.h cudaMalloc", "cudaMalloc"},
    // The rules, in both precisions, by name; the last is for names that nothing has.
    {"FastNearfield/RectangularPistonCuda.cu cudaMemcpyToSymbol", "cudaMemcpyToSymbol"},
    {"FastNearfield/RectangularPistonCuda.dp.cu cudaMemcpyToSymbol", "cudaMemcpyToSymbol"},
    {"FastNearfield/RectangularPistonCuda.dp.cu cudaMemcpyToSymbol", "cudaMemcpyToSymbol"},
    {"FastNearfield/RectangularPistonCuda.dp.cu cudaGetLastError", "cudaGetLastError"},
    {"core/CudaToday.cpp cudaMemcpyToSymbol", "cudaMemcpyToSymbol"},
    // Launches, which the stage after them checks.
    {"FastNearfield/LaunchPieces.h launch", "cudaLaunchKernel"},
    {"FastNearfield/LaunchPieces.h launch", "cudaLaunchKernel"},
    {"FastNearfield/RectangularPistonCuda.cu cudaThreadSynchronize", "cudaDeviceSynchronize"},
    {"FastNearfield/LaunchTiming.h launch", "cudaLaunchKernel"},
    {"FastNearfield/RectangularPistonCuda.cu launch", "cudaLaunchKernel"},
    {"FastNearfield/RectangularPistonCuda.dp.cu launch", "cudaLaunchKernel"},
    // A module of its own, whose answer is the failure.
    {"matlab/about.cpp cudaGetDeviceCount", anotherModule},
    {"matlab/about.cpp cudaGetDeviceProperties", anotherModule},
    {"matlab/about.cpp cudaGetErrorString", neverFails},
    {"matlab/about.cpp cudaGetLastError", neverFails}};

/// Those that are no `others`.
std::string without(const std::multiset<std::string>& calls,
                    const std::multiset<std::string>& others) {
  std::vector<std::string> rest;
  std::set_difference(calls.begin(), calls.end(), others.begin(), others.end(),
                      std::back_inserter(rest));
  std::string list;
  for (const std::string& call : rest) list += call + "\n";
  return list;
}

/// Fails when the sources get a call of the runtime that none of the tests above makes fail: a
/// check must have reported, and what stands in no check must be known to the list above.
TEST_F(EveryCallTest, IsEveryCallOfTheSources) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "not every way is taken where it would take minutes";
#endif
  for (const Way& way : ways::all) failEachOf(way);
  if (HasFailure()) return;  // and no loop went to its end

  for (const CheckSite& site : support::checkSites())
    EXPECT_EQ(everyCall.reported().count(site), 1u)
        << "never seen to report: " << site.file << ", line " << site.line << ": " << site.text;

  std::multiset<std::string> known;
  for (const Unchecked& call : unchecked) {
    known.insert(call.call);
    EXPECT_TRUE(*call.function == '\0' || everyCall.failed().count(call.function) == 1)
        << "never failed: " << call.call;
  }
  const std::multiset<std::string> written = support::uncheckedCalls();
  EXPECT_EQ(without(written, known), "") << "is new: say here how it fails";
  EXPECT_EQ(without(known, written), "") << "is no more";
}

}  // namespace
