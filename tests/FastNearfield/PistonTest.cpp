#include <gtest/gtest.h>

#include <cmath>

#include "FastNearfield/RectangularPiston2.h"

using pistonfield::RectangularPistonCuda2;

namespace {

template <class T>
void expectOrder100(const pistonfield::QuadratureRule<T>& rule) {
  T x[100], w[100];
  pistonfield::legendre_compute(100, x, w);
  ASSERT_EQ(rule.order, 100);
  EXPECT_FALSE(rule.borrowed);
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(rule.x[i], x[i]);
    EXPECT_EQ(rule.w[i], w[i]);
    EXPECT_TRUE(std::isnan(rule.mappedX[i]));
    EXPECT_TRUE(std::isnan(rule.mappedW[i]));
  }
}

TEST(PistonTest, ANewPistonHoldsTheRuleOfOrder100InBothPrecisions) {
  const RectangularPistonCuda2 piston(0.01, 0.02, 4000);
  expectOrder100(*piston.doubleRule);
  expectOrder100(*piston.floatRule);
}

TEST(PistonTest, DimensionsAndWaveNumberReadBackExactly) {
  const RectangularPistonCuda2 piston(0.1, 1.0 / 3, 4188.7902047863905);
  EXPECT_EQ(piston.l, 0.1);
  EXPECT_EQ(piston.s, 1.0 / 3);
  EXPECT_EQ(piston.k, 4188.7902047863905);
}

TEST(PistonTest, EvaluatesOnTheGPUUnlessToldOtherwise) {
  RectangularPistonCuda2 piston(1, 1, 1);
  EXPECT_TRUE(piston.useGPU);
  piston.useGPU = false;
  EXPECT_FALSE(piston.useGPU);
}

TEST(PistonTest, IsDestroyedThroughItsBases) {
  const std::unique_ptr<pistonfield::Transducer> transducer =
      std::make_unique<RectangularPistonCuda2>(1, 1, 1);
  EXPECT_NE(dynamic_cast<pistonfield::Piston*>(transducer.get()), nullptr);
}

TEST(PistonTest, ABorrowedRuleLeavesItsArraysAlone) {
  double values[4] = {1, 2, 3, 4};
  {
    pistonfield::QuadratureRule<double> rule(1);
    delete[] rule.x;
    delete[] rule.w;
    delete[] rule.mappedX;
    delete[] rule.mappedW;
    rule.x = &values[0];
    rule.w = &values[1];
    rule.mappedX = &values[2];
    rule.mappedW = &values[3];
    rule.borrowed = true;
  }
  EXPECT_EQ(values[3], 4.0);
}

}  // namespace
