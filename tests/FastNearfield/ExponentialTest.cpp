#include "FastNearfield/intervals/Exponential.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "FastNearfield/Exponentials.h"
#include "lanes/InstructionSet.h"

namespace {

using pistonfield::InstructionSet;

/// The sets that this processor has, and packs of one lane, with which a GPU's thread computes.
std::vector<std::pair<const char*, const Exponentials*>> everySet() {
#if defined(__x86_64__)
  std::vector<std::pair<const char*, const Exponentials*>> sets = {
      {"one lane", &exponentialsOfOneLane}, {"SSE2", &exponentialsOfSse2}};
  if (pistonfield::has(InstructionSet::AVX2)) sets.emplace_back("AVX2", &exponentialsOfAvx2);
  if (pistonfield::has(InstructionSet::AVX512)) sets.emplace_back("AVX-512", &exponentialsOfAvx512);
  return sets;
#else
  return {{"one lane", &exponentialsOfOneLane}, {"NEON", &exponentialsOfNeon}};
#endif
}

template <class T>
class ExponentialTest : public testing::Test {
 protected:
  using Values = std::vector<T>;
  static constexpr bool isFloat = sizeof(T) == sizeof(float);
  static constexpr T most = isFloat ? 87 : 700;

  /// From the whole range, with the same probability for every size; and next to where the
  /// reduction steps to another power of 2.
  static Values arguments() {
    std::mt19937_64 random(1);
    Values x;
    const int least = isFloat ? -120 : -1000;
    std::uniform_real_distribution<double> mantissa(0.5, 1), anywhere(-1, 1);
    std::uniform_int_distribution<int> exponent(least, 10);
    while (x.size() < 100'000) {
      const double size =
          std::min(std::ldexp(mantissa(random), exponent(random)), static_cast<double>(most));
      x.insert(x.end(), {static_cast<T>(size), static_cast<T>(-size),
                         static_cast<T>(most * anywhere(random))});
    }
    const double ln2 = 0.69314718055994530942;
    for (int n = -2 * 1009; n <= 2 * 1009; ++n) {
      const T step = static_cast<T>(n * ln2 / 2);
      if (std::fabs(step) <= most)
        x.insert(x.end(), {step, std::nextafter(step, T(0)), std::nextafter(step, 2 * step)});
    }
    x.insert(x.end(), {most, -most, T(0), -T(0)});
    x.resize((x.size() + 15) / 16 * 16);
    return x;
  }

  static void evaluate(const Exponentials& set, const Values& x, Values& exponentials,
                       Values& minusOne) {
    exponentials.resize(x.size());
    minusOne.resize(x.size());
    if constexpr (isFloat)
      set.inFloats(x.data(), exponentials.data(), minusOne.data(), static_cast<int>(x.size()));
    else
      set.inDoubles(x.data(), exponentials.data(), minusOne.data(), static_cast<int>(x.size()));
  }

  /// The largest relative error, in units of half the machine epsilon.
  template <class Exact>
  static double errorOf(const Values& x, const Values& computed, Exact exact) {
    long double largest = 0;
    for (std::size_t n = 0; n < x.size(); ++n) {
      const long double expected = exact(static_cast<long double>(x[n]));
      const long double error = std::abs(static_cast<long double>(computed[n]) - expected);
      if (error == 0) continue;
      largest = std::max(largest, error / std::abs(expected));
    }
    return static_cast<double>(largest / (std::numeric_limits<T>::epsilon() / 2));
  }
};

using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(ExponentialTest, Precisions);

TYPED_TEST(ExponentialTest, ErrorsAreAFewUnitsInTheWholeRangeForEverySet) {
  const auto x = this->arguments();
  typename TestFixture::Values exponentials, minusOne;
  for (const auto& [name, set] : everySet()) {
    this->evaluate(*set, x, exponentials, minusOne);
    const double error = this->errorOf(x, exponentials, [](long double y) { return std::exp(y); }),
                 errorMinusOne =
                     this->errorOf(x, minusOne, [](long double y) { return std::expm1(y); });
    std::cout << name << ": exp(x) within " << error << " units, exp(x) - 1 within "
              << errorMinusOne << "\n";
    EXPECT_LE(error, 2) << name;
    EXPECT_LE(errorMinusOne, 2.5) << name;
    EXPECT_GT(error, 0.5) << name;
  }
}

TYPED_TEST(ExponentialTest, BeyondTheRangeItsEndsAreTaken) {
  using T = TypeParam;
  using Limits = std::numeric_limits<T>;
  const T last = TestFixture::most;
  typename TestFixture::Values x(16);
  const T beyond[] = {last, last + 1, Limits::max(), Limits::infinity()};
  for (std::size_t n = 0; n < 4; ++n) {
    x[n] = beyond[n];
    x[4 + n] = -beyond[n];
  }
  typename TestFixture::Values exponentials, minusOne;
  for (const auto& [name, set] : everySet()) {
    this->evaluate(*set, x, exponentials, minusOne);
    for (std::size_t n = 0; n < 8; ++n) {
      EXPECT_EQ(exponentials[n], exponentials[n / 4 * 4]) << name << " " << x[n];
      EXPECT_EQ(minusOne[n], minusOne[n / 4 * 4]) << name << " " << x[n];
      EXPECT_TRUE(std::isnormal(exponentials[n])) << name << " " << x[n];
    }
    EXPECT_EQ(exponentials[8], T(1)) << name;
    EXPECT_EQ(minusOne[8], T(0)) << name;
  }
}

}  // namespace
