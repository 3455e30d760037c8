#include "support/EveryCall.h"

#include <string>
#include <vector>

#include "FastNearfield/Ways.h"

using launchers::Values;
using pistonfield::CudaInterface;
using support::Ending;
using support::EveryCall;
using ways::Way;

// Makes every call of the runtime fail, one at a time, in all uses of the C++ interface.

namespace {

/// Throws every failure, like the hosts' handlers, and stores it.
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
    }
    ending.standardError = testing::internal::GetCapturedStderr();
    ending.outputs = {printed()};
    return ending;
  }

  void failEachOf(const Way& way) {
    for (const int timing : {0, 1}) {
      const auto start = [=] {
        startAfresh(way.inHostMemory ? Memory::HOSTS : Memory::SEPARATE);
        do_timing = timing;
      };
      // Each call of a host starts the device again.
      EveryCall(device).failEach({[&] { return endingOf(way); }, start,
                                  [] { CudaInterface::init(); }, way.steps, timing == 1, true});
    }
  }
};

class EveryCallOfTest : public EveryCallTest, public testing::WithParamInterface<Way> {};

TEST_P(EveryCallOfTest, FailsAsOneReportAndLeavesNothing) { failEachOf(GetParam()); }

INSTANTIATE_TEST_SUITE_P(All, EveryCallOfTest, testing::ValuesIn(ways::all()),
                         [](const auto& way) { return way.param.name; });

TEST_F(EveryCallTest, AListOfTheDevicesIsAsLongAsTheRuntimeLetsIt) {
  for (const char* function : {"cudaGetDeviceCount", "cudaGetDeviceProperties"}) {
    startAfresh();
    device.failCall(function, 1, cudaErrorUnknown, true);
    EXPECT_EQ(support::failureOf([] { CudaInterface::dumpDevices(); }).condition, "");
    EXPECT_NE(printed().find("Total: "), std::string::npos);
  }
}

// The launchers.

class LauncherStepsTest : public launchers::Test, public testing::WithParamInterface<Way> {};

TEST_P(LauncherStepsTest, AreAllMadeWhenTheHandlerReturns) {
  std::vector<support::Failure> failures;
  pistonfield::ErrorHandler::setErrorHandler(new support::ReturningHandler(failures));
  device.failCall("cudaMalloc", 1, cudaErrorMemoryAllocation, false);
  device.failCall("cudaLaunchKernel", 1, cudaErrorLaunchFailure, false);
  device.recordCalls();
  testing::internal::CaptureStderr();
  GetParam().call();
  testing::internal::GetCapturedStderr();
  const support::Steps expected = support::callsOf(GetParam().steps, false);
  const std::vector<pistonfield::emulation::Call> calls = device.calls();
  ASSERT_EQ(calls.size(), expected.size());
  for (std::size_t n = 0; n < calls.size(); ++n) EXPECT_EQ(calls[n].function, expected[n].function);
  ASSERT_GE(failures.size(), 3u);
  EXPECT_NE(failures.front().condition.find(": out of memory"), std::string::npos);
  EXPECT_NE(failures.back().condition.find("cudaMemcpyDeviceToHost ): invalid argument"),
            std::string::npos);
  EXPECT_EQ(device.liveAllocations(), 0u);
}

TEST_P(LauncherStepsTest, MeasureTheLaunchWhileTimingIsOn) {
  const bool isTimed = support::callsOf(GetParam().steps, true).size() >
                       support::callsOf(GetParam().steps, false).size();
  global_time = -1;
  GetParam().call();
  EXPECT_EQ(global_time, -1);
  do_timing = 1;
  GetParam().call();
  EXPECT_EQ(global_time >= 0, isTimed);
  const double last = global_time;
  do_timing = 0;
  GetParam().call();
  EXPECT_EQ(global_time, last);
}

std::vector<Way> allLaunchers() {
  const std::vector<Way> all = ways::all();
  return {all.begin(), all.begin() + 10};
}

INSTANTIATE_TEST_SUITE_P(All, LauncherStepsTest, testing::ValuesIn(allLaunchers()),
                         [](const auto& way) { return way.param.name; });

}  // namespace
