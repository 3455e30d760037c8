#include <vector>

#include "gateway/EmulatedGatewayTest.h"

// The user interrupts a call that is long enough to be launched in pieces.

namespace {

class InterruptionTest : public InEitherMemory {
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

  static constexpr std::size_t count = 70000;  // more than three pieces at order 512
  Arguments arguments;
};

TEST_P(InterruptionTest, AsksBetweenPiecesOnly) {
  EXPECT_EQ(call({}).checks, 0);
  const host::Outcome outcome = interrupted(0);
  EXPECT_GE(outcome.checks, 2);
  EXPECT_FALSE(outcome.interrupted);
}

TEST_P(InterruptionTest, EndsWithEverythingFreedAndTheNextCallIsRight) {
  const std::vector<std::complex<double>> expected = pressures(arguments);
  for (const int check : {1, 2}) {
    const host::Outcome outcome = interrupted(check);
    EXPECT_TRUE(outcome.interrupted);
    EXPECT_EQ(outcome.checks, check);
    EXPECT_FALSE(outcome.error) << *outcome.error;
    EXPECT_EQ(outcome.standardError, "");
    EXPECT_EQ(device.liveAllocations(), 0u);
    EXPECT_EQ(pressures(arguments), expected);
  }
}

INSTANTIATE_IN_EITHER_MEMORY(InterruptionTest);

}  // namespace
