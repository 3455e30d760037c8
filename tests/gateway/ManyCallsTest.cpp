#include <cuda_runtime.h>

#include <cstddef>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "gateway/GatewayTest.h"
#include "support/ProcessMemory.h"

#if !defined(CUDART_VERSION)
#include "emulation/TestControl.h"
#endif

// A host that makes many calls, often with mistakes, must not use more memory at the end than at
// the beginning.

namespace {

/// A call that ends with an error.
struct Mistake {
  std::function<void(Arguments&)> make;
  std::size_t count;  // of arguments
  std::string error;  // the beginning of its message
};

const std::string report = "ERROR: assertion failure in ";

const std::vector<Mistake> mistakes = {
    {[](Arguments&) {}, 4, "Must have five or six input arguments"},
    {[](Arguments& a) { a.points = host::text("abc"); }, 7, "Input must be real"},
    {[](Arguments& a) {
       a.points.dims = {2, 3};
     },
     7, "Points (argument 1)"},
    {[](Arguments& a) { a.points = host::matrix(3, 0, {}); }, 7, "The given grid must have"},
    {[](Arguments& a) { a.l = host::ofClass("cell", 1, 1); }, 7, "l (argument 3)"},
    {[](Arguments& a) { a.mode = host::scalar(1); }, 7, "Input 5 must be a character string"},
    {[](Arguments& a) { a.mode = host::text("gpu"); }, 7, "Input 5 must either be"},
    {[](Arguments& a) { a.mode = host::text("cpu"); }, 7, "CPU version not implemented"},
    {[](Arguments& a) { a.nabscissas = host::scalar(513); }, 7, report},
    {[](Arguments& a) { a.nabscissas = host::matrix(513, 2, std::vector<double>(1026)); }, 7,
     report},
    {[](Arguments& a) {
       a.nabscissas = host::matrix(2, 3, {1, 2, 3, 4, 5, 6});
     },
     7, "abscissas must be a number"}};

#if defined(CUDART_VERSION)

/// Holds the device's context. Otherwise each call would destroy it, together with anything that
/// the call leaked. The context is not released at the end, since that would break the module's own
/// runtime.
class DeviceMemory {
 public:
  explicit DeviceMemory(const host::MexHost& /*module*/) {
    EXPECT_EQ(cudaFree(nullptr), cudaSuccess);
  }

  template <class Call>
  host::Outcome during(Call call) {
    return call();
  }

  /// Calls `call` only, since a GPU cannot be made to fail.
  template <class Call>
  host::Outcome duringFault(std::size_t /*n*/, Call call) {
    return call();
  }

  long taken() const {
    std::size_t free = 0, total = 0;
    EXPECT_EQ(cudaMemGetInfo(&free, &total), cudaSuccess);
    return static_cast<long>(total - free);
  }

  void expectAsBefore(long before) const { EXPECT_LE(taken() - before, mostResident); }

  // The driver and other processes allocate and free memory at any time. The limit is half of what
  // 500 good calls would take if each leaked an array of at least 40 kB.
  static constexpr long mostResident = 500 * 40'000 / 2;
};

constexpr std::size_t faults = 0;

#else

/// The nth call of a function of the runtime, which fails.
struct Fault {
  const char* function;
  int nth;
};

constexpr Fault all[] = {{"cudaMalloc", 1}, {"cudaMalloc", 2},       {"cudaMemcpy", 1},
                         {"cudaMemcpy", 2}, {"cudaLaunchKernel", 2}, {"cudaFree", 1},
                         {"cudaFree", 2},   {"cudaDeviceReset", 1}};
constexpr std::size_t faults = std::size(all);

/// Counts the device memory that calls allocate and do not free themselves. The reset at their end
/// would hide it.
class DeviceMemory {
 public:
  explicit DeviceMemory(const host::MexHost& module)
      : device_(*reinterpret_cast<decltype(&emulationTestControl)>(
            module.symbol("emulationTestControl"))()) {
    device_.separateMemory();
  }
  DeviceMemory(const DeviceMemory&) = delete;
  DeviceMemory& operator=(const DeviceMemory&) = delete;
  ~DeviceMemory() { device_.restore(); }

  template <class Call>
  host::Outcome during(Call call) {
    device_.recordCalls();
    host::Outcome outcome = call();
    for (const pistonfield::emulation::Call& made : device_.calls()) {
      if (std::string(made.function) == "cudaMalloc") ++notGivenBack_;
      if (std::string(made.function) == "cudaFree") --notGivenBack_;
    }
    return outcome;
  }

  /// A failing cudaFree leaks through no fault of the call; a failing cudaMalloc allocates nothing.
  template <class Call>
  host::Outcome duringFault(std::size_t n, Call call) {
    const Fault& fault = all[n];
    device_.failCall(fault.function, fault.nth, cudaErrorUnknown, false);
    if (std::string(fault.function) == "cudaMalloc") --notGivenBack_;
    host::Outcome outcome = during(call);
    device_.restore();
    device_.separateMemory();
    return outcome;
  }

  long taken() const { return notGivenBack_ + static_cast<long>(device_.liveAllocations()); }

  void expectAsBefore(long before) const { EXPECT_EQ(taken(), before); }

  static constexpr long mostResident = 4 << 20;

 private:
  pistonfield::emulation::TestControl& device_;
  long notGivenBack_ = 0;
};

#endif

class ManyCallsTest : public GatewayTest {
 protected:
  ManyCallsTest() {
    std::vector<double> points;
    for (int n = 0; n < 5000; ++n) points.insert(points.end(), {n * 1e-6, n * 2e-6, 0.01});
    good.points = host::matrix(3, 5000, points);
  }

  /// Makes good calls and mistaken calls alternately.
  void makeCalls(int count, DeviceMemory& memory) {
    for (int n = 0; n < count; ++n) {
      if (n % 2 == 0)
        makeGoodCall(memory);
      else
        makeMistake(static_cast<std::size_t>(n / 2) % (mistakes.size() + faults), memory);
    }
  }

  Arguments good;

 private:
  void makeGoodCall(DeviceMemory& memory) {
    const host::Outcome outcome = memory.during([&] { return call(good); });
    ASSERT_EQ(outcome.error, std::nullopt);
    if (expected_.empty()) expected_ = outcome.results[0].re;
    EXPECT_EQ(outcome.results[0].re, expected_);
  }

  void makeMistake(std::size_t which, DeviceMemory& memory) {
    host::Outcome outcome;
    std::string error = report;
    if (which < mistakes.size()) {
      Arguments wrong = good;
      mistakes[which].make(wrong);
      outcome = memory.during([&] { return call(wrong, mistakes[which].count); });
      error = mistakes[which].error;
    } else {
      outcome = memory.duringFault(which - mistakes.size(), [&] { return call(good); });
    }
    EXPECT_EQ(outcome.error.value_or("no error").find(error), 0u)
        << which << ": " << outcome.error.value_or("no error");
  }

  std::vector<double> expected_;
};

TEST_F(ManyCallsTest, AThousandLeaveTheMemoryAsItWas) {
  DeviceMemory memory(module);
  makeCalls(200, memory);  // until everything has been used once
  const long onTheDevice = memory.taken();
  const std::size_t resident = support::residentMemory();
  makeCalls(1000, memory);
  memory.expectAsBefore(onTheDevice);
  if (support::memoryIsOnlyOurs) {
    EXPECT_LE(static_cast<long>(support::residentMemory() - resident), DeviceMemory::mostResident);
  }
}

}  // namespace
