#include "FastNearfield/intervals/ProductRule.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <random>

#include "FastNearfield/GaussLegendre.h"
#include "FastNearfield/OldestSet.h"
#include "FastNearfield/intervals/PistonOnPoints.h"
#include "field/ExactPressure.h"
#include "support/AnyScene.h"

namespace {

using pistonfield::Pack;
using Single = Pack<Set>;

/// ∬ exp(−2πi(R − C))/R dξ dη by rules of these orders, in double precision.
std::complex<double> productOf(double a, double b, const pistonfield::Position& p, int orderX,
                               int orderY) {
  const auto ruleOf = [](int order, std::vector<double>& x, std::vector<double>& w) {
    x.resize(static_cast<std::size_t>(order));
    w.resize(x.size());
    pistonfield::legendre_compute(order, x.data(), w.data());
  };
  std::vector<double> x, wx, y, wy;
  ruleOf(orderX, x, wx);
  ruleOf(orderY, y, wy);
  const double C = std::hypot(p[0], p[1], p[2]);
  std::complex<double> sum = 0;
  for (std::size_t i = 0; i < x.size(); ++i)
    for (std::size_t j = 0; j < y.size(); ++j) {
      const double R = std::hypot(p[0] - a * x[i], p[1] - b * y[j], p[2]);
      sum += wx[i] * wy[j] * std::polar(1 / R, -2 * M_PI * (R - C));
    }
  return a * b * sum;
}

TEST(ProductRuleTest, OrdersKeepTheToleranceAndRoundingItsBoundForRandomPistons) {
  std::mt19937 random(3);
  support::Chance chance(random);
  const pistonfield::GaussRules<float> rules(1, pistonfield::mostIntervalOrder);
  double worst = 0, worstRounding = 0;
  int tested = 0;
  for (int n = 0; n < 6000; ++n) {
    const auto a = static_cast<float>(chance.ofAnySize(0.05, 20)),
               b = static_cast<float>(chance.ofAnySize(0.05, 20));
    const double distance = chance.ofAnySize(0.2, 100) * static_cast<double>(std::max(a, b));
    const double slope = chance.between(0, M_PI / 2), turn = chance.between(0, M_PI / 2);
    const auto x = static_cast<float>(n % 5 == 0 ? 0 : distance * std::sin(slope) * std::cos(turn)),
               y = static_cast<float>(n % 7 == 0 ? 0 : distance * std::sin(slope) * std::sin(turn)),
               z = static_cast<float>(distance * std::cos(slope) + 1e-3);
    const pistonfield::Position point = {static_cast<double>(x), static_cast<double>(y),
                                         static_cast<double>(z)};
    const double tolerance = chance.ofAnySize(1e-8, 1e-2);
    const pistonfield::ProductNeeds<Set> needs(
        Single(a), Single(b), {Single(x), Single(x), Single(y), Single(y), Single(z)},
        Single(static_cast<float>(tolerance)));
    const double orderX = std::ceil(first(needs.orderX)), orderY = std::ceil(first(needs.orderY));
    if (!(orderX <= pistonfield::mostIntervalOrder && orderY <= pistonfield::mostIntervalOrder))
      continue;
    ++tested;
    const auto byRule = productOf(static_cast<double>(a), static_cast<double>(b), point,
                                  static_cast<int>(orderX), static_cast<int>(orderY));
    const double C = std::hypot(point[0], point[1], point[2]);
    const pistonfield::Field::Piston piston{2 * static_cast<double>(a), 2 * static_cast<double>(b)};
    const auto exact = std::complex<double>(exactPressure(piston, 2 * M_PIl, point) *
                                            std::polar(1.0L, 2 * M_PIl * C));
    const double error = std::abs(byRule - exact) / tolerance;
    ASSERT_LE(error, 2.0 / 3) << "a " << a << " b " << b << " x " << x << " y " << y << " z " << z
                              << " orders " << orderX << " " << orderY << " tolerance "
                              << tolerance;
    worst = std::max(worst, error);

    const auto distanceC = static_cast<float>(C);
    const auto inSingle =
        pistonfield::productSum<Set>(a, b, Single(x), Single(y), Single(distanceC),
                                     {{rules.table(), static_cast<int>(orderX)}, x == 0},
                                     {{rules.table(), static_cast<int>(orderY)}, y == 0});
    const std::complex<double> single(first(inSingle.re), first(inSingle.im));
    const double rounding = std::abs(single - byRule) / (first(needs.rounding) * 0x1p-24);
    ASSERT_LE(rounding, 1) << "a " << a << " b " << b << " x " << x << " y " << y << " z " << z;
    worstRounding = std::max(worstRounding, rounding);
  }
  std::printf("%d pistons: largest error %.2f of the tolerance, rounding %.2f of its bound\n",
              tested, worst, worstRounding);
  EXPECT_GT(tested, 3000);
}

}  // namespace
