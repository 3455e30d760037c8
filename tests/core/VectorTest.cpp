#include "core/Vector.h"

#include <gtest/gtest.h>

#include "support/RecordingHandler.h"

using pistonfield::MVector;
using support::Failure;
using support::failureOf;

namespace {

// Volatile, so that the compiler does not detect the invalid index and warn.
volatile int belowZero = -1;
volatile int three = 3;

TEST(VectorTest, NewVectorIsZero) {
  MVector<double, 3> v;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(v[i], 0.0);
}

TEST(VectorTest, ComponentsAreKeptAndCopied) {
  MVector<double, 3> v;
  v[0] = 1;
  v[2] = 3;
  MVector<double, 3> copy = v;
  v[0] = 9;
  EXPECT_EQ(copy[0], 1.0);
  EXPECT_EQ(copy[1], 0.0);
  EXPECT_EQ(copy[2], 3.0);
}

TEST(VectorTest, IndexBelowZeroReportsLine48) {
  MVector<double, 3> v;
  const Failure failure = failureOf([&] { v[belowZero] = 0; });
  EXPECT_EQ(failure.condition, "i>=0");
  EXPECT_EQ(failure.line, 48);
  EXPECT_EQ(failure.file, "src/core/Vector");
}

TEST(VectorTest, IndexThreeReportsLine48) {
  MVector<double, 3> v;
  const Failure failure = failureOf([&] { v[three] = 0; });
  EXPECT_EQ(failure.condition, "i<N");
  EXPECT_EQ(failure.line, 48);
  EXPECT_EQ(failure.file, "src/core/Vector");
}

TEST(VectorTest, ReadOnlyIndexReportsLine42) {
  const MVector<double, 3> v;
  double sum = 0;
  const Failure below = failureOf([&] { sum += v[belowZero]; });
  EXPECT_EQ(below.condition, "i>=0");
  EXPECT_EQ(below.line, 42);
  EXPECT_EQ(below.file, "src/core/Vector");
  const Failure above = failureOf([&] { sum += v[three]; });
  EXPECT_EQ(above.condition, "i<N");
  EXPECT_EQ(above.line, 42);
}

}  // namespace
