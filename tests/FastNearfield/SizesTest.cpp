#include <cmath>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "FastNearfield/Launchers.h"

// Launchers at sizes that reach a limit: the device's memory, the shape of a launch, or 32 bits.

using launchers::a;
using launchers::b;
using launchers::Complex;
using launchers::k;
using launchers::Values;
using support::Failure;
using support::quietFailureOf;

namespace {

struct Launcher {
  std::string name;
  Values (*call)(const launchers::Size&);
};

void PrintTo(const Launcher& launcher, std::ostream* out) { *out << launcher.name; }

const std::vector<Launcher> grids = {{"RectangularPiston_func", launchers::grid},
                                     {"RectangularPiston_func2", launchers::split},
                                     {"RectangularPiston_func_structured", launchers::structured},
                                     {"do_calculate_grid", launchers::twelveScalars},
                                     {"do_calculate", launchers::fromCentre},
                                     {"RectangularPiston_func_d", launchers::grid_d},
                                     {"RectangularPiston_func2_d", launchers::split_d},
                                     {"do_calculate_grid_d", launchers::twelveScalars_d},
                                     {"do_calculate_d", launchers::fromCentre_d}};

class SizesTest : public launchers::Test {
 protected:
  void SetUp() override {
    Test::SetUp();
    device.poisonFreshMemory();
  }

  /// The bytes that a call allocates or copies, in turn, if every allocation fails.
  template <class Call>
  std::vector<std::size_t> bytes(Call call) {
    std::vector<Failure> failures;
    startAfresh();
    pistonfield::ErrorHandler::setErrorHandler(new support::ReturningHandler(failures));
    device.failCall("cudaMalloc", 1, cudaErrorMemoryAllocation, true);
    device.failCall("cudaLaunchKernel", 1, cudaErrorLaunchFailure, true);
    device.recordCalls();
    testing::internal::CaptureStderr();
    call();
    testing::internal::GetCapturedStderr();
    std::vector<std::size_t> asked;
    for (const pistonfield::emulation::Call& made : device.calls())
      if (made.bytes > 0) asked.push_back(made.bytes);
    return asked;
  }
};

class LauncherSizesTest : public SizesTest, public testing::WithParamInterface<Launcher> {};

INSTANTIATE_TEST_SUITE_P(All, LauncherSizesTest, testing::ValuesIn(grids),
                         [](const auto& launcher) { return launcher.param.name; });

TEST_P(LauncherSizesTest, AShapeThatTheDeviceRefusesIsReportedAndTheNextCallIsRight) {
  const Values expected = GetParam().call(launchers::small);
  // 65536 rows of blocks with 8 rows of points each, one more than a device can launch.
  for (const launchers::Size& size : {launchers::Size{1, 524281, 1}, launchers::Size{1, 1, 524281},
                                      launchers::Size{1, 773, 679}}) {
    EXPECT_EQ(quietFailureOf([&] { GetParam().call(size); }).condition,
              "invalid configuration argument");
    EXPECT_EQ(device.liveAllocations(), 0u);
    EXPECT_EQ(GetParam().call(launchers::small), expected);
  }
}

TEST_P(LauncherSizesTest, TheLargestShapesThatTheDeviceTakesAreEvaluated) {
  const Values line = GetParam().call({1, 1, 524280});
  EXPECT_EQ(line.size(), 524280u);
  const Values few = GetParam().call({1, 1, 3});
  EXPECT_EQ(Values(line.begin(), line.begin() + 3), few);
  for (const std::complex<double>& p : line)  // fresh memory reads as NaN
    ASSERT_FALSE(std::isnan(p.real()) || std::isnan(p.imag()));
}

TEST_F(SizesTest, AsManyPointsAsAnIntCountsAreCountedInBytes) {
  constexpr int most = std::numeric_limits<int>::max();
  const std::size_t pairs = std::size_t{most} * 8, triples = std::size_t{most} * 12;
  EXPECT_EQ(bytes([] { RectangularPiston_func_unstructured(nullptr, most, nullptr, a, b, k); }),
            (std::vector<std::size_t>{pairs, triples, triples, pairs}));
  EXPECT_EQ(bytes([] { do_calculate(nullptr, most, 1, 1, 1, 1, 1, a, b, k); }),
            (std::vector<std::size_t>{pairs, pairs}));
  EXPECT_EQ(bytes([] { do_calculate_d(nullptr, 1, 1, most, 1, 1, 1, a, b, k); }),
            (std::vector<std::size_t>{2 * pairs, 2 * pairs}));
}

TEST_F(SizesTest, MorePointsThanAnIntCountsTakeNoMemory) {
  constexpr int sx = 2048, sy = 131073, sz = 8;  // 2³¹ + 2¹⁴
  std::vector<double> t = launchers::doubleTransform();
  const std::vector<std::size_t> nothing, transform{64, 64}, transform_d{128, 128};
  EXPECT_EQ(bytes([] { do_calculate(nullptr, sx, sy, sz, 1, 1, 1, a, b, k); }), nothing);
  EXPECT_EQ(bytes([] { do_calculate(nullptr, -sx, -sy, sz, 1, 1, 1, a, b, k); }), nothing);
  EXPECT_EQ(bytes([] { do_calculate_d(nullptr, sx, sy, sz, 1, 1, 1, a, b, k); }), nothing);
  EXPECT_EQ(bytes([] {
              do_calculate_grid(nullptr, sx, sy, sz, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, a, b, k);
            }),
            nothing);
  EXPECT_EQ(
      bytes([] { RectangularPiston_func(nullptr, sx, sy, sz, launchers::transform, a, b, k); }),
      transform);
  EXPECT_EQ(bytes([] {
              RectangularPiston_func2(nullptr, nullptr, sx, sy, sz, launchers::transform, a, b, k);
            }),
            transform);
  EXPECT_EQ(bytes([&] { RectangularPiston_func_d(nullptr, sx, sy, sz, t.data(), a, b, k); }),
            transform_d);
  EXPECT_EQ(
      bytes([&] { RectangularPiston_func2_d(nullptr, nullptr, sx, sy, sz, t.data(), a, b, k); }),
      transform_d);
  EXPECT_EQ(bytes([] {
              RectangularPiston_func_structured(nullptr, sx, sy, sz, nullptr, nullptr, nullptr, a,
                                                b, k);
            }),
            (std::vector<std::size_t>{8192, 524292, 32, 8192, 524292, 32}));
}

}  // namespace
