#include <cmath>
#include <complex>
#include <ostream>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/LaunchShape.h"
#include "FastNearfield/Launchers.h"
#include "FastNearfield/RectangularPistonKernels.h"
#include "core/CudaCompatibility.h"
#include "support/DeviceArrays.h"
#include "support/ReferenceField.h"

using launchers::joined;
using launchers::Values;
using launchers::widened;
using pistonfield::blockShape;
using pistonfield::Complex;
using pistonfield::launch;
using pistonfield::regularGridShape;
using support::GuardedArray;
using support::Uploaded;

namespace {

constexpr float a = 0.75f, b = 0.5f, k = 12.5f;  // half-width and half-height

class KernelTest : public support::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    if (!IsSkipped()) setCudaIntegratorParameters("RectangularPiston", 10);
  }

  /// The pressures at the points x, y, z of a list, computed by the kernel for lists in a grid of
  /// blocks.
  static Values list(const std::vector<float>& positions, dim3 grid) {
    const auto count = positions.size() / 3;
    GuardedArray<Complex> result(count);
    const Uploaded<float> pos(positions);
    EXPECT_EQ(launch(calculate_grid_unstructured, grid, blockShape, result.device(),
                     static_cast<int>(count), pos.get(), a, b, k),
              cudaSuccess);
    return widened(result.read());
  }
  static Values list(const std::vector<float>& positions) {
    return list(positions, pistonfield::pointListShape(static_cast<int>(positions.size() / 3)));
  }
};

// The one kernel that no launcher calls. LaunchersAgreeTest has the others.
TEST_F(KernelTest, TheKernelOfTwelveScalarsAndTwoArraysAgreesWithTheList) {
  const float* const t = test_grids::transform;
  for (const test_grids::Size& size : test_grids::sizes) {
    const auto [sx, sy, sz] = size;
    GuardedArray<float> re(size.points()), im(size.points());
    EXPECT_EQ(launch(calculate_grid, regularGridShape(sx, sy, sz), blockShape, re.device(),
                     im.device(), sx, sy, sz, t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8],
                     t[9], t[10], t[11], a, b, k),
              cudaSuccess);
    EXPECT_EQ(joined(re.read(), im.read()), list(test_grids::transformedPositions(size)));
  }
}

TEST_F(KernelTest, AnyShapeOfTheGridOfBlocksGivesTheSame) {
  std::vector<float> positions;
  for (int i = 0; i < 500; ++i)
    positions.insert(positions.end(), {static_cast<float>(i) / 64, 0.25f, 1.0f});
  for (const dim3 grid :
       {dim3(4), dim3(1, 4), dim3(1, 1, 4), dim3(1, 2, 2), dim3(2, 1, 2), dim3(2, 3, 5)})
    EXPECT_EQ(list(positions, grid), list(positions));
}

TEST_F(KernelTest, ACountBelowOneWritesNothing) {
  const Uploaded<float> pos({0, 0, 1});
  for (const int count : {0, -1, -2147483647 - 1}) {
    GuardedArray<Complex> result(0);
    EXPECT_EQ(launch(calculate_grid_unstructured, dim3(1), blockShape, result.device(), count,
                     pos.get(), a, b, k),
              cudaSuccess);
    EXPECT_EQ(launch(calculate, dim3(1), blockShape, result.device(), count, 1, 1, 1.0f, 1.0f, 1.0f,
                     a, b, k),
              cudaSuccess);
    result.read();
  }
}

TEST_F(KernelTest, WithoutARuleEveryPressureIsZero) {
  cudaDeviceReset();
  EXPECT_EQ(list({0.3f, 0.2f, 1})[0], 0.0);
}

TEST_F(KernelTest, MoreGridPointsThanAnIndexCountsAreNotLaunched) {
  EXPECT_EQ(regularGridShape(65536, 32768, 1).y, 4294967295u);
  EXPECT_EQ(regularGridShape(2048, 1024, 1024).y, 4294967295u);
  EXPECT_EQ(regularGridShape(8192, 524280, 1).y, 4294967295u);
  EXPECT_EQ(regularGridShape(1, 65536, 65536).y, 4294967295u);
  EXPECT_EQ(regularGridShape(2147483647, 1, 1).y, 1u);
}

struct DeviceFile {
  const char* name;
  int order;
};

void PrintTo(const DeviceFile& file, std::ostream* out) { *out << file.name; }

class ReferenceFieldTest : public support::DeviceTest,
                           public testing::WithParamInterface<DeviceFile> {};

TEST_P(ReferenceFieldTest, EveryPointIsWithinTheBound) {
  setCudaIntegratorParameters("RectangularPiston", GetParam().order);
  for (const support::ReferenceField& field : support::readReferenceFields(GetParam().name)) {
    std::vector<float> positions;
    for (const support::Position& p : field.points)
      for (const double c : {p.x, p.y, p.z}) positions.push_back(static_cast<float>(c));
    std::vector<Complex> result(field.points.size());
    RectangularPiston_func_unstructured(result.data(), static_cast<int>(result.size()),
                                        positions.data(), static_cast<float>(field.l),
                                        static_cast<float>(field.s), static_cast<float>(field.k));
    for (std::size_t i = 0; i < result.size(); ++i)
      EXPECT_LE(std::abs(std::complex<double>(result[i].re, result[i].im) - field.pressure[i]),
                field.tolerance(i))
          << GetParam().name << ", l = " << field.l << ", point " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Orders, ReferenceFieldTest,
                         testing::Values(DeviceFile{"dev10.txt", 10}, DeviceFile{"dev17.txt", 17},
                                         DeviceFile{"dev64.txt", 64}),
                         [](const auto& file) {
                           return "Order" + std::to_string(file.param.order);
                         });

}  // namespace
