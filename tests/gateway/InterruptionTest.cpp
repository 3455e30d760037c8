#include <vector>

#include "gateway/EmulatedGatewayTest.h"

// A call long enough to be launched in pieces, which its user interrupts.

namespace {

class InterruptionTest : public EmulatedGatewayTest {
 protected:
  InterruptionTest() {
    std::vector<double> points;
    for (std::size_t n = 0; n < count; ++n) {
      const auto step = static_cast<double>(n) / count;
      points.insert(points.end(), {0.01 * step, 0.02 - 0.03 * step, 0.001 + 0.05 * step});
    }
    arguments.points = host::matrix(3, count, points);
    arguments.nabscissas = host::scalar(512);
  }
  host::Outcome interrupted(int check) { return module.call(1, arguments.first(7), check); }

  static constexpr std::size_t count = 70000;  // three pieces and more at order 512
  Arguments arguments;
};

TEST_F(InterruptionTest, AsksBetweenPiecesOnly) {
  EXPECT_EQ(call({}).checks, 0);
  const host::Outcome outcome = interrupted(0);
  EXPECT_GE(outcome.checks, 2);
  EXPECT_FALSE(outcome.interrupted);
  EXPECT_FALSE(outcome.error) << *outcome.error;
}

TEST_F(InterruptionTest, EndsWithEverythingFreedAndNothingPrintedAfter) {
  for (const int check : {1, 2}) {
    const host::Outcome outcome = interrupted(check);
    EXPECT_TRUE(outcome.interrupted);
    EXPECT_EQ(outcome.checks, check);
    EXPECT_FALSE(outcome.error) << *outcome.error;
    EXPECT_EQ(outcome.standardError, "");
    EXPECT_EQ(device.liveAllocations(), 0u);
  }
}

TEST_F(InterruptionTest, TheNextCallIsRight) {
  const std::vector<std::complex<double>> expected = pressures(arguments);
  interrupted(1);
  EXPECT_EQ(pressures(arguments), expected);
}

TEST_F(InterruptionTest, PiecesGiveTheValuesOfShortLists) {
  const std::vector<std::complex<double>> whole = pressures(arguments);
  for (const std::size_t first :
       {std::size_t{0}, std::size_t{20479}, std::size_t{20480}, count - 3}) {
    Arguments few = arguments;
    few.points =
        host::matrix(3, 3,
                     {arguments.points.re.begin() + static_cast<std::ptrdiff_t>(3 * first),
                      arguments.points.re.begin() + static_cast<std::ptrdiff_t>(3 * first + 9)});
    const std::vector<std::complex<double>> values = pressures(few);
    for (std::size_t n = 0; n < 3; ++n) EXPECT_EQ(values[n], whole[first + n]) << first + n;
  }
}

TEST_F(InterruptionTest, AFailingPieceEndsTheWork) {
  for (const char* function : {"cudaLaunchKernel", "cudaDeviceSynchronize"}) {
    device.recordCalls();
    device.failCall(function, 2, cudaErrorLaunchFailure, false);
    const host::Outcome outcome = interrupted(0);
    ASSERT_TRUE(outcome.error) << function;
    EXPECT_NE(outcome.error->find("unspecified launch failure)"), std::string::npos)
        << *outcome.error;
    EXPECT_LT(outcome.checks, 2) << function;
    EXPECT_EQ(device.liveAllocations(), 0u);
    device.restore();
  }
}

}  // namespace
