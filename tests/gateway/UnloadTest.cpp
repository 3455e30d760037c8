#include <cuda_runtime.h>

#include <cstddef>
#include <fstream>
#include <string>

#include "gateway/GatewayTest.h"
#include "support/ProcessMemory.h"
#include "support/Threads.h"
#include "support/WithoutDevice.h"

// A host may unload a module and load it again any number of times. The module is linked as for
// users: with symbols that other modules could share, it would stay in the process.

namespace {

// The driver of a GPU stays in the process, with its memory and its threads, some of which the
// first loads start. Sanitizers keep freed memory.
#if defined(CUDART_VERSION)
constexpr bool threadsAreOnlyOurs = false, memoryIsOnlyOurs = false;
#else
constexpr bool threadsAreOnlyOurs = true, memoryIsOnlyOurs = support::memoryIsOnlyOurs;
#endif
constexpr std::size_t mostLeft = 2'000'000;  // a single call takes 1'400'000

bool isMapped(const std::string& path) {
  const std::string name = path.substr(path.rfind('/'));
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);)
    if (line.find(name) != std::string::npos) return true;
  return false;
}

std::vector<double> realParts(const host::MexHost& module, const Arguments& arguments) {
  const host::Outcome outcome = module.call(1, arguments.first(7));
  EXPECT_FALSE(outcome.error) << *outcome.error;
  return outcome.results.empty() ? std::vector<double>{} : outcome.results[0].re;
}

class UnloadTest : public testing::Test {
 protected:
  void SetUp() override {
    const host::MexHost module(path);
    if (lacksDevice(module.call(1, arguments.first(7)))) support::skipWithoutDevice();
  }

  const std::string path = hiddenModulePath();
  Arguments arguments;
};

TEST_F(UnloadTest, NothingOfAModuleStaysInTheProcess) {
  std::vector<double> points;
  const std::size_t count = 30000;  // enough work for every core
  for (std::size_t i = 0; i < count; ++i)
    points.insert(points.end(), {0, 0, 0.001 + 1e-6 * static_cast<double>(i)});
  arguments.points = host::matrix(3, count, points);

  const std::vector<double> expected = realParts(host::MexHost(path), arguments);
  std::ptrdiff_t threads = support::threadsOfThisProcess();
  std::size_t early = 0;
  for (int n = 1; n <= 200; ++n) {
    {
      const host::MexHost again(path);
      ASSERT_TRUE(isMapped(path));
      ASSERT_EQ(realParts(again, arguments), expected) << n;
    }
    ASSERT_FALSE(isMapped(path)) << n;
    if (n == 20) early = support::residentMemory();
    if (n == 20 && !threadsAreOnlyOurs) threads = support::threadsOfThisProcess();
    if (n >= 20 || threadsAreOnlyOurs) {
      ASSERT_TRUE(support::hasThreads(threads)) << n;
    }
  }
  if (memoryIsOnlyOurs) {
    EXPECT_LT(support::residentMemory(), early + mostLeft);
  }
}

}  // namespace
