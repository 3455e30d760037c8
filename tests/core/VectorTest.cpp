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

TEST(VectorTest, AnIndexOutOfRangeIsReported) {
  MVector<double, 3> v;
  const MVector<double, 3>& readOnly = v;
  double sum = 0;
  const auto expect = [](const Failure& failure, const char* condition, int line) {
    EXPECT_EQ(failure.condition, condition);
    EXPECT_EQ(failure.line, line);
    EXPECT_EQ(failure.file, "src/core/Vector");
  };
  expect(failureOf([&] { v[belowZero] = 0; }), "i>=0", 48);
  expect(failureOf([&] { v[three] = 0; }), "i<N", 48);
  expect(failureOf([&] { sum += readOnly[belowZero]; }), "i>=0", 42);
  expect(failureOf([&] { sum += readOnly[three]; }), "i<N", 42);
}

}  // namespace
