#include "support/EveryCall.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/Threads.h"

namespace support {
namespace {

/// The step that reports the failure of call `failed`: this call itself, a later one that fails
/// too, or the first that checks for a pending error.
std::optional<std::size_t> reporter(const Steps& calls, std::size_t failed, bool lasting) {
  for (std::size_t n = failed; n < calls.size(); ++n) {
    const bool asksForPending = calls[n].function == "cudaGetLastError";
    if (calls[n].kind != Step::UNCHECKED && (n == failed || lasting || asksForPending)) return n;
    if (!lasting && asksForPending) return std::nullopt;  // which clears the error
    if (n == failed) n += calls[n].leftOut;
  }
  return std::nullopt;
}

/// What is printed before call `n`.
std::string printedBefore(const Work& work, std::size_t n) {
  std::string text;
  std::size_t calls = 0;
  for (const Step& step : work.steps) {
    if (step.kind == Step::PRINT)
      text += step.text;
    else if ((work.isTimed || !step.isTimed) && calls++ == n)
      break;
  }
  return text;
}

bool startsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

/// If the properties of a device cannot be read, selecting it prints an additional line.
void dropUnknownDevice(Ending& ending) {
  const std::string line = "MapSMtoCores undefined SMversion 0.0!\n";
  for (std::string& output : ending.outputs)
    if (startsWith(output, line)) output.erase(0, line.size());
}

void expectSame(const Ending& ending, const Ending& good) {
  EXPECT_TRUE(ending.reports.empty()) << ending.reports[0].condition;
  EXPECT_EQ(ending.otherError, good.otherError);
  EXPECT_TRUE(ending.values == good.values) << "other numbers";
  EXPECT_EQ(ending.outputs, good.outputs);
  EXPECT_EQ(ending.standardError, good.standardError);
}

}  // namespace

void EveryCall::failEach(const Work& work) {
  work.startAfresh();
  device_.recordCalls();
  const Ending good = work.run();
  const Steps calls = callsOf(work.steps, work.isTimed);
  ASSERT_TRUE(good.reports.empty()) << good.reports[0].condition;
  expectSteps(calls);

  const cudaError_t errors[] = {cudaErrorUnknown, cudaErrorMemoryAllocation,
                                cudaErrorLaunchFailure};
  for (const bool lasting : {false, true})
    for (std::size_t n = 0; n < calls.size() && !::testing::Test::HasFailure(); ++n) {
      SCOPED_TRACE("call " + std::to_string(n + 1) + ", " + calls[n].function +
                   (lasting ? ", and all after it" : ""));
      failNth(work, good, n, {errors[(n + lasting) % 3], lasting});
    }
  work.startAfresh();
}

void EveryCall::expectSteps(const Steps& calls) const {
  const std::vector<pistonfield::emulation::Call> made = device_.calls();
  for (std::size_t n = 0; n < std::min(made.size(), calls.size()); ++n) {
    SCOPED_TRACE("call " + std::to_string(n + 1) + ": " + calls[n].text);
    ASSERT_EQ(made[n].function, calls[n].function);
    EXPECT_TRUE(calls[n].bytes == 0 || made[n].bytes == calls[n].bytes) << made[n].bytes;
    if (calls[n].grid.x > 0) {
      EXPECT_EQ(made[n].grid.x, calls[n].grid.x);
      EXPECT_EQ(made[n].grid.y, calls[n].grid.y);
      EXPECT_EQ(made[n].grid.z, 1u);
      EXPECT_EQ(made[n].block.x, 128u);
      EXPECT_EQ(made[n].block.y * made[n].block.z, 1u);
    }
  }
  EXPECT_EQ(made.size(), calls.size());
}

void EveryCall::failNth(const Work& work, const Ending& good, std::size_t failed,
                        const Fault& fault) {
  const Steps calls = callsOf(work.steps, work.isTimed);
  work.startAfresh();
  const std::ptrdiff_t threads = threadsOfThisProcess();
  device_.recordCalls();
  device_.failCall("", static_cast<int>(failed) + 1, fault.error, fault.lasting);
  Ending ending = work.run();

  if (calls[failed].function == "cudaGetDeviceProperties") dropUnknownDevice(ending);
  if (const auto n = reporter(calls, failed, fault.lasting)) {
    expectReport(calls[*n], ending, fault.error);
    EXPECT_TRUE(!work.listsOutput || ending.outputs[0] == printedBefore(work, *n))
        << ending.outputs[0];
    for (std::size_t i = 0; i < good.outputs.size(); ++i)
      EXPECT_TRUE(startsWith(good.outputs[i], ending.outputs.at(i))) << ending.outputs[i];
  } else {
    expectSame(ending, good);
  }
  expectMemory(failed, fault.lasting);
  EXPECT_TRUE(hasThreads(threads));

  if (fault.lasting)
    work.startAfresh();
  else
    work.goOn();
  expectSame(work.run(), good);
}

void EveryCall::expectReport(const Step& step, const Ending& ending, cudaError_t error) {
  ASSERT_EQ(ending.reports.size(), 1u) << ending.otherError;
  EXPECT_EQ(ending.otherError, "");
  const Ending::Report& report = ending.reports[0];
  const std::string text = device_.errorString(error);
  EXPECT_EQ(report.file, step.file) << step.text;
  EXPECT_TRUE(step.line == 0 || report.line == step.line) << report.line << ": " << step.text;
  if (step.kind == Step::STAGE) {
    EXPECT_EQ(report.condition, text) << step.text;
    EXPECT_EQ(ending.standardError, "Cuda error: " + step.text + " in file '" + step.file +
                                        "' in line " + std::to_string(report.line) + " : " + text +
                                        ".\n");
  } else {
    EXPECT_EQ(report.condition, "Cuda error when calling " + step.text + ": " + text);
    EXPECT_EQ(ending.standardError, "");
  }
}

void EveryCall::expectMemory(std::size_t failed, bool lasting) const {
  const std::vector<pistonfield::emulation::Call> calls = device_.calls();
  std::size_t allocated = 0, releases = 0, live = 0;
  for (std::size_t n = 0; n < calls.size(); ++n) {
    const std::string function = calls[n].function;
    const bool succeeds = n < failed || (n > failed && !lasting);
    if (function == "cudaFree") ++releases;
    if (!succeeds) continue;
    if (function == "cudaMalloc") ++allocated, ++live;
    if (function == "cudaFree") --live;
    if (function == "cudaDeviceReset") live = 0;
  }
  EXPECT_EQ(releases, allocated);
  EXPECT_EQ(device_.liveAllocations(), live);
}

}  // namespace support
