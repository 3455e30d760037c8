#include "gateway/EmulatedGatewayTest.h"

// Failures of the device below the gateway.

namespace {

using FaultTest = EmulatedGatewayTest;

TEST_F(FaultTest, NoDeviceReachesTheUserAsTheStartUpReport) {
  device.pretendDevices({});
  EXPECT_EQ(errorOf({}),
            "ERROR: assertion failure in src/core/cuda_init at line 16\n"
            "       condition failed: (no CUDA-capable device is detected).\n\n");
}

TEST_F(FaultTest, TheDeviceIsStartedBeforeAnythingElseIsLookedAt) {
  device.pretendDevices({});
  const std::string report = errorOf({});
  EXPECT_EQ(errorOf({}, 4), report);
  EXPECT_EQ(module.call(0, {host::text("info")}).error, report);
}

class FirstCallTest : public GatewayTest {
 protected:
  void SetUp() override {}  // makes no call
};

TEST_F(FirstCallTest, AlsoTheModulesFirstErrorIsReportedToTheHost) {
  // The error handler must be installed before the device can fail.
  auto& device =
      *reinterpret_cast<decltype(&emulationTestControl)>(module.symbol("emulationTestControl"))();
  device.pretendDevices({});
  const host::Outcome outcome = call({}, 5);
  device.restore();
  ASSERT_TRUE(outcome.error);
  EXPECT_EQ(outcome.error->find("ERROR: assertion failure in src/core/cuda_init"), 0u);
}

TEST_F(FaultTest, WithoutDoubleSupportTheCallGoesOn) {
  const auto expected = pressures({});
  device.failCall("cudaMemcpyToSymbol", 1, cudaErrorInvalidSymbol, false);
  const host::Outcome outcome = call({});
  EXPECT_FALSE(outcome.error);
  EXPECT_EQ(outcome.standardError, "Support for double not found\n");
  EXPECT_EQ(outcome.results.at(0).re[0], expected[0].real());
}

}  // namespace
