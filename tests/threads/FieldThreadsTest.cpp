#include <gtest/gtest.h>

#include <complex>
#include <cstddef>
#include <string>
#include <vector>

#include "field/field.h"
#include "support/Threads.h"

// Any number of threads may use one Field, or several, at once, and each gets the same bits as
// alone, or its own error.

using pistonfield::Field;
using pistonfield::FieldError;
using pistonfield::FieldOptions;

namespace {

constexpr std::size_t count = 8;

Field fieldOf(std::size_t n) {
  Field::Piston one, other;
  one.width = other.width = 2 + static_cast<double>(n);
  one.height = other.height = 3;
  other.centre = {4, 0, 1};
  other.weight = {0.5, -1};
  return {{one, other}, 6.28};
}

struct Ending {
  std::vector<std::complex<double>> pressures;
  std::string error;
};

/// Thread n calls a field with options of its own, every fourth with wrong ones.
Ending endingOf(const Field& field, std::size_t n) {
  pistonfield::AffineGrid grid;
  grid.origin = {-4, 0.5, 0.25};
  grid.steps[0] = {0.25, 0, 0};
  grid.steps[2] = {0, 0, 0.5};
  grid.counts = {33, 1, 64};
  FieldOptions options;
  options.tolerance = n % 4 == 0 ? 1e-2 : n % 4 == 1 ? 1e-9 : 0;
  if (n % 4 == 2) options.order = 7;
  try {
    return {field.on(grid, options), ""};
  } catch (const FieldError& error) {
    return {{}, error.what()};
  }
}

/// The parameter tells whether all threads use one field.
class FieldThreadsTest : public testing::TestWithParam<bool> {};

TEST_P(FieldThreadsTest, EachGetsWhatItGetsAlone) {
  std::vector<Field> fields;
  for (std::size_t n = 0; n < count; ++n) fields.push_back(fieldOf(GetParam() ? 0 : n));
  const auto used = [&](std::size_t n) -> const Field& { return fields[GetParam() ? 0 : n]; };
  std::vector<Ending> together(count);
  support::onThreads(count, [&](std::size_t n) {
    for (int round = 0; round < 3; ++round) together[n] = endingOf(used(n), n);
  });
  for (std::size_t n = 0; n < count; ++n) {
    const Ending alone = endingOf(used(n), n);
    EXPECT_TRUE(together[n].pressures == alone.pressures) << "thread " << n;
    EXPECT_EQ(together[n].error, alone.error);
    EXPECT_EQ(alone.error.empty(), n % 4 != 3) << alone.error;
  }
}

INSTANTIATE_TEST_SUITE_P(WithOneField, FieldThreadsTest, testing::Bool(),
                         testing::PrintToStringParamName());

}  // namespace
