#include "FastNearfield/Launchers.h"

// Tests of a build without the double-precision kernels.

using support::Failure;
using support::failureOf;

namespace {

class WithoutDoubleTest : public launchers::Test {
 protected:
  void SetUp() override {
    testing::internal::CaptureStderr();
    launchers::Test::SetUp();
    said_ = testing::internal::GetCapturedStderr();
  }
  std::string said_;
};

TEST_F(WithoutDoubleTest, LoadingARuleSaysSoOnceAndGoesOnInSinglePrecision) {
  EXPECT_EQ(said_, "Support for double not found\n");
  for (const std::complex<double>& p : launchers::unstructured(launchers::small)) EXPECT_NE(p, 0.0);
}

TEST_F(WithoutDoubleTest, LaunchesInDoublePrecisionFailAtTheirStage) {
  for (const auto call : {launchers::grid_d, launchers::split_d, launchers::twelveScalars_d,
                          launchers::fromCentre_d}) {
    testing::internal::CaptureStderr();
    const Failure failure = failureOf([&] { call(launchers::small); });
    const std::string standardError = testing::internal::GetCapturedStderr();
    EXPECT_EQ(failure.condition, "invalid device function");
    EXPECT_EQ(failure.file, "src/FastNearfield/RectangularPistonCuda.dp");
    const std::string label = call == launchers::fromCentre_d ? "calculate" : "calculate_grid";
    EXPECT_EQ(standardError.find("Cuda error: " + label + " in file"), 0u) << standardError;
    EXPECT_EQ(device.liveAllocations(), 0u);
  }
}

}  // namespace
