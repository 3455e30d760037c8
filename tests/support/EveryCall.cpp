#include "support/EveryCall.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/Threads.h"

namespace support {
namespace {

using Calls = std::vector<emulation::Call>;

bool is(const emulation::Call& call, const char* function) {
  return std::string(call.function) == function;
}

bool isOneOf(const emulation::Call& call, std::initializer_list<const char*> functions) {
  return std::any_of(functions.begin(), functions.end(),
                     [&](const char* function) { return is(call, function); });
}

/// Whether call n only forgets what is pending, as the start of the runtime does when it follows
/// the selection of the device.
bool forgets(const Calls& calls, std::size_t n) {
  return is(calls[n], "cudaGetLastError") && n > 0 && is(calls[n - 1], "cudaSetDevice");
}

/// Whether the system waits in call n for the start of the device, and looks at nothing.
bool waitsForStart(const Calls& calls, std::size_t n) {
  return is(calls[n], "cudaDeviceSynchronize") &&
         std::none_of(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(n),
                      [](const emulation::Call& call) { return is(call, "cudaMalloc"); });
}

/// Whether the system looks at the answer of call n.
bool isChecked(const Calls& calls, std::size_t n, const Work& work, const Ending& good) {
  if (is(calls[n], "cudaFree")) return !work.releasesSilently || n + 1 < calls.size();
  // Where an error unwinds through it, the release of the device is silent.
  if (is(calls[n], "cudaDeviceReset")) return good.otherError.empty();
  return (isOneOf(calls[n], {"cudaGetLastError", "cudaDeviceSynchronize", "cudaMalloc",
                             "cudaMemcpy", "cudaMemcpyToSymbol"})) &&
         !forgets(calls, n) && !waitsForStart(calls, n);
}

/// The call at which the failure of call `failed` is found: that one, one that fails after it, or
/// the first that asks what is pending.
std::optional<std::size_t> reporter(const Calls& calls, std::size_t failed, bool lasting,
                                    const Work& work, const Ending& good) {
  if (isChecked(calls, failed, work, good)) return failed;
  for (std::size_t n = failed; n < calls.size(); ++n) {
    if (lasting && isChecked(calls, n, work, good)) return n;
    if (!lasting && forgets(calls, n)) return std::nullopt;
    if (!lasting && n > failed && is(calls[n], "cudaGetLastError")) return n;
  }
  return std::nullopt;
}

/// Whether a report's text shows a call of this function, by the name that users know.
bool shows(const std::string& text, const emulation::Call& call) {
  const std::string name = is(call, "cudaDeviceSynchronize") ? "cudaThreadSynchronize"
                           : is(call, "cudaDeviceReset")     ? "cudaThreadExit"
                                                             : call.function;
  return text.find(name + "(") == 0 || (is(call, "cudaMemcpyToSymbol") && text == "err");
}

/// Whether no loop repeats it: each stands at a place of its own.
bool isMadeOnce(const emulation::Call& call) {
  return isOneOf(call, {"cudaMalloc", "cudaMemcpy", "cudaMemcpyToSymbol", "cudaFree"});
}

bool startsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

/// A device that does not tell its properties is selected with a line of its own.
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
  const std::size_t calls = device_.calls().size();
  ASSERT_TRUE(good.reports.empty()) << good.reports[0].condition;
  ASSERT_GT(calls, 0u);

  for (const bool lasting : {false, true})
    for (const cudaError_t error :
         {cudaErrorUnknown, cudaErrorMemoryAllocation, cudaErrorLaunchFailure}) {
      reportedInLoop_.clear();
      std::size_t nth = 1;
      for (; failNth(work, good, nth, {error, lasting}) >= nth; ++nth) {
        if (::testing::Test::HasFailure())
          FAIL() << "at call " << nth << ": " << device_.errorString(error);
      }
      EXPECT_GT(nth, calls);
    }
  work.startAfresh();
}

/// How many calls were made; fewer than `nth` if the work succeeded because none was left to fail.
std::size_t EveryCall::failNth(const Work& work, const Ending& good, std::size_t nth,
                               const Fault& fault) {
  work.startAfresh();
  const std::ptrdiff_t threads = threadsOfThisProcess();
  device_.recordCalls();
  device_.failCall("", static_cast<int>(nth), fault.error, fault.lasting);
  Ending ending = work.run();
  const Calls calls = device_.calls();
  if (calls.size() < nth) {
    expectSame(ending, good);
    return calls.size();
  }

  const std::size_t failed = nth - 1;
  SCOPED_TRACE(std::string(calls[failed].function) + (fault.lasting ? ", and all after it" : ""));
  failed_.insert(calls[failed].function);
  if (is(calls[failed], "cudaGetDeviceProperties")) dropUnknownDevice(ending);
  if (const auto n = reporter(calls, failed, fault.lasting, work, good)) {
    if (const auto site = siteOf(ending)) {
      expectReport(*site, ending, calls[*n], fault.error);
      reported_.insert(*site);
      const bool isNew = reportedInLoop_.insert(*site).second;
      const bool mayBeOld = *n != failed || fault.lasting || !isMadeOnce(calls[failed]);
      EXPECT_TRUE(isNew || mayBeOld) << "two calls are reported as " << site->text;
    }
    for (std::size_t i = 0; i < good.outputs.size(); ++i)
      EXPECT_TRUE(startsWith(good.outputs[i], ending.outputs.at(i))) << ending.outputs[i];
  } else {
    expectSame(ending, good);
  }
  expectMemory(calls, failed, fault.lasting);
  EXPECT_TRUE(hasThreads(threads));

  if (fault.lasting)
    work.startAfresh();
  else
    work.goOn();
  expectSame(work.run(), good);
  return calls.size();
}

/// Where the one report of an ending says that it comes from.
std::optional<CheckSite> EveryCall::siteOf(const Ending& ending) const {
  EXPECT_EQ(ending.reports.size(), 1u) << ending.otherError;
  EXPECT_EQ(ending.otherError, "");
  if (ending.reports.size() != 1) return std::nullopt;
  const Ending::Report& report = ending.reports[0];
  const auto site = sites_.find({report.file, report.line, false, ""});
  if (site != sites_.end()) return *site;
  ADD_FAILURE() << "no check stands in " << report.file << ", line " << report.line;
  return std::nullopt;
}

void EveryCall::expectReport(const CheckSite& site, const Ending& ending,
                             const emulation::Call& call, cudaError_t error) const {
  const std::string text = device_.errorString(error);
  const std::string& condition = ending.reports[0].condition;
  EXPECT_EQ(site.isStage, is(call, "cudaGetLastError"));
  if (site.isStage) {
    EXPECT_EQ(condition, text);
    EXPECT_EQ(ending.standardError, "Cuda error: " + site.text + " in file '" + site.file +
                                        "' in line " + std::to_string(site.line) + " : " + text +
                                        ".\n");
  } else {
    EXPECT_TRUE(shows(site.text, call)) << site.text;
    EXPECT_EQ(condition, "Cuda error when calling " + site.text + ": " + text);
    EXPECT_EQ(ending.standardError, "");
  }
}

void EveryCall::expectMemory(const Calls& calls, std::size_t failed, bool lasting) const {
  std::size_t allocated = 0, releases = 0, live = 0;
  for (std::size_t n = 0; n < calls.size(); ++n) {
    const bool succeeds = n < failed || (n > failed && !lasting);
    if (is(calls[n], "cudaFree")) ++releases;
    if (!succeeds) continue;
    if (is(calls[n], "cudaMalloc")) ++allocated, ++live;
    if (is(calls[n], "cudaFree")) --live;
    if (is(calls[n], "cudaDeviceReset")) live = 0;
  }
  EXPECT_EQ(releases, allocated);
  EXPECT_EQ(device_.liveAllocations(), live);
}

}  // namespace support
