#include <cmath>
#include <cstddef>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "gateway/GatewayTest.h"

// The numbers that the gateway returns.

namespace {

using Pressures = std::vector<std::complex<double>>;

class PressureTest : public GatewayTest {
 protected:
  Pressures withTable(const std::vector<double>& stored, std::size_t rows) {
    Arguments arguments;
    arguments.nabscissas = host::matrix(rows, 2, stored);
    return pressures(arguments);
  }

  Pressures withOrder(double order) {
    Arguments arguments;
    arguments.nabscissas = host::scalar(order);
    return pressures(arguments);
  }
};

TEST_F(PressureTest, ValuesAreThoseOfTheLauncherToTheLastBit) {
  std::vector<float> positions(300);
  for (std::size_t i = 0; i < positions.size(); ++i)
    positions[i] = 0.02f * std::sin(static_cast<float>(i));
  Arguments arguments;
  arguments.points = host::matrix(3, 100, {positions.begin(), positions.end()});
  const Pressures p = pressures(arguments);
  ASSERT_EQ(p.size(), 100u);

  const auto load = reinterpret_cast<decltype(&setCudaIntegratorParameters)>(
      module.symbol("setCudaIntegratorParameters"));
  const auto launch = reinterpret_cast<decltype(&RectangularPiston_func_unstructured)>(
      module.symbol("RectangularPiston_func_unstructured"));
  std::vector<pistonfield::Complex> launched(100);
  testing::internal::CaptureStdout();
  load("RectangularPiston", 10);
  launch(launched.data(), 100, positions.data(), 0.01f, 0.005f, 4188.79f);
  testing::internal::GetCapturedStdout();
  for (std::size_t i = 0; i < p.size(); ++i)
    EXPECT_EQ(p[i], std::complex<double>(launched[i].re, launched[i].im)) << i;
}

TEST_F(PressureTest, WithoutAnOrderItIs10) {
  EXPECT_EQ(pressures({}, 6), withOrder(10));
  EXPECT_NE(call({}, 6).standardOutput.find("setting order 10elements: 5\n"), std::string::npos);
}

TEST_F(PressureTest, WithoutAModeItIsTheGPU) { EXPECT_EQ(pressures({}, 5), pressures({}, 6)); }

TEST_F(PressureTest, CudadpGivesWhatCudaGives) {
  Arguments arguments;
  arguments.mode = host::text("cudadp");
  EXPECT_EQ(pressures(arguments), pressures({}));
}

TEST_F(PressureTest, OrdersTruncateTowardZero) {
  EXPECT_EQ(withOrder(7.9), withOrder(7));
  EXPECT_NE(withOrder(7.9), withOrder(8));
  EXPECT_EQ(withOrder(512.9), withOrder(512));
}

TEST_F(PressureTest, OrdersOfOtherNumericClassesAreRead) {
  Arguments arguments;
  arguments.nabscissas = host::ofClass("int8", 1, 1);
  arguments.nabscissas.bytes = {7};
  EXPECT_EQ(pressures(arguments), withOrder(7));
}

TEST_F(PressureTest, SidesAndWaveNumberAreReadAsTheHostReadsAScalar) {
  const Pressures expected = pressures({});
  Arguments arguments;
  arguments.l = host::matrix(2, 2, {0.01, 7, 8, 9});
  arguments.s = host::complexMatrix(1, 1, {0.005}, {3});
  EXPECT_EQ(pressures(arguments), expected);
  arguments.k = host::ofClass("logical", 1, 1);
  arguments.k.bytes = {1};
  Arguments one;
  one.k = host::scalar(1);
  EXPECT_EQ(pressures(arguments), pressures(one));
  arguments.k = host::text("d");
  one.k = host::scalar('d');
  EXPECT_EQ(pressures(arguments), pressures(one));
}

TEST_F(PressureTest, OfAComplexTableTheRealPartIsRead) {
  Arguments arguments;
  arguments.nabscissas = host::complexMatrix(1, 2, {0, 2}, {5, 5});
  EXPECT_EQ(pressures(arguments), withOrder(1));
}

TEST_F(PressureTest, ATableOf5RowsIsReadAs3PairsOfItsFirst6Values) {
  // Order 5: three abscissas and weights, as consecutive pairs from the top of the first column.
  const std::vector<double> pairs = {
      -0.9061798459386640, 0.2369268850561891, -0.5384693101056831, 0.4786286704993665, 0.0,
      0.5688888888888889};
  std::vector<double> stored = pairs;
  stored.resize(10, std::nan(""));  // never read
  EXPECT_EQ(withTable(stored, 5), withOrder(5));
}

TEST_F(PressureTest, ATableOf4RowsIsReadAs2PairsOfItsFirstColumn) {
  std::vector<double> stored = {-0.8611363115940526, 0.3478548451374538, -0.3399810435848563,
                                0.6521451548625461};
  stored.resize(8, std::nan(""));
  EXPECT_EQ(withTable(stored, 4), withOrder(4));
}

TEST_F(PressureTest, ATableOf512RowsIsReadToItsLastPair) {
  // All weights but the last one are zero, so the rule has two effective nodes.
  std::vector<double> stored(1024, std::nan(""));
  for (std::size_t i = 0; i < 256; ++i) {
    stored[2 * i] = -0.5;
    stored[2 * i + 1] = i < 255 ? 0 : 1;
  }
  EXPECT_EQ(withTable(stored, 512), withTable({-0.5, 1, 0, 0}, 2));
}

TEST_F(PressureTest, ATableOf1RowIsTheMidpointRule) {
  EXPECT_EQ(withTable({0.0, 2.0}, 1), withOrder(1));
}

TEST_F(PressureTest, TheNaturalTableIsNotWhatIsRead) {
  const std::vector<double> natural = {-0.8611363115940526, -0.3399810435848563, 0.3399810435848563,
                                       0.8611363115940526,  0.3478548451374538,  0.6521451548625461,
                                       0.6521451548625461,  0.3478548451374538};
  EXPECT_NE(withTable(natural, 4), withOrder(4));
}

TEST_F(PressureTest, ManyPointsGiveWhatFewGive) {
  // So many points that all cores take part in converting them.
  constexpr std::size_t count = 300000, few = 5000;
  std::vector<double> x(3 * count);
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = 0.02 * std::sin(static_cast<double>(i));
  Arguments arguments;
  arguments.points = host::matrix(3, count, x);
  const Pressures together = pressures(arguments);
  ASSERT_EQ(together.size(), count);
  for (std::size_t first = 0; first < count; first += few) {
    const auto begin = x.begin() + static_cast<std::ptrdiff_t>(3 * first);
    arguments.points = host::matrix(3, few, {begin, begin + 3 * few});
    const auto part = together.begin() + static_cast<std::ptrdiff_t>(first);
    ASSERT_EQ(pressures(arguments), Pressures(part, part + few)) << first;
  }
}

}  // namespace
