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

// A host that calls for hours, and often wrongly, must have the memory at the end that it had at
// the beginning.

namespace {

/// A call that ends with an error.
struct Mistake {
  std::function<void(Arguments&)> make;
  std::size_t count;  // of arguments
  std::string error;  // begins like this
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

/// Holds the device's context, which a call would otherwise take with it, and all that the call
/// had left in it. It stays: to end it under the module's own runtime would break that.
class DeviceMemory {
 public:
  explicit DeviceMemory(const host::MexHost& /*module*/) {
    EXPECT_EQ(cudaFree(nullptr), cudaSuccess);
  }

  template <class Call>
  host::Outcome during(Call call) {
    return call();
  }

  /// There is no way to make a GPU fail.
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

  // The driver and other processes take and return memory as they like. What can be asked is that
  // good calls do not, of which each would leave an array: 40 kB or more.
  static constexpr long mostResident = 500 * 40'000 / 2;
};

constexpr std::size_t faults = 0;

#else

/// The nth call of a function of the runtime that fails.
struct Fault {
  const char* function;
  int nth;
};

constexpr Fault all[] = {{"cudaMalloc", 1}, {"cudaMalloc", 2},       {"cudaMemcpy", 1},
                         {"cudaMemcpy", 2}, {"cudaLaunchKernel", 2}, {"cudaFree", 1},
                         {"cudaFree", 2},   {"cudaDeviceReset", 1}};
constexpr std::size_t faults = std::size(all);

/// Counts what calls take of the device and do not give back themselves, which its reset at their
/// end would hide.
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

  /// A failing cudaFree is the device's fault; a failing cudaMalloc took nothing.
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

  /// Good ones and mistakes in turns.
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
  makeCalls(200, memory);  // after which everything has been used once
  const long onTheDevice = memory.taken();
  const std::size_t resident = support::residentMemory();
  makeCalls(1000, memory);
  memory.expectAsBefore(onTheDevice);
  if (support::memoryIsOnlyOurs) {
    EXPECT_LE(static_cast<long>(support::residentMemory() - resident), DeviceMemory::mostResident);
  }
}

}  // namespace
