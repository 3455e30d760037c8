#include "gateway/EmulatedGatewayTest.h"

// Failures of the device below the gateway.

namespace {

using FaultTest = EmulatedGatewayTest;

TEST_F(FaultTest, AFailingCopyReachesTheUserAsTheReport) {
  device.failCall("cudaMemcpy", 2, cudaErrorLaunchFailure, false);
  const std::string error = errorOf({});
  EXPECT_EQ(error.find("ERROR: assertion failure in src/FastNearfield/RectangularPistonCuda at "
                       "line "),
            0u);
  EXPECT_NE(error.find("\n       condition failed: (Cuda error when calling cudaMemcpy( &data[0], "
                       "d_arrayr, datasize*2, cudaMemcpyDeviceToHost ): unspecified launch "
                       "failure).\n\n"),
            std::string::npos);
  EXPECT_EQ(device.liveAllocations(), 0u);
}

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
  // The handler must be there before the device can fail.
  auto& device =
      *reinterpret_cast<decltype(&emulationTestControl)>(module.symbol("emulationTestControl"))();
  device.pretendDevices({});
  const host::Outcome outcome = call({}, 5);
  device.restore();
  ASSERT_TRUE(outcome.error);
  EXPECT_EQ(outcome.error->find("ERROR: assertion failure in src/core/cuda_init"), 0u);
}

TEST_F(FaultTest, EveryFailingCallIsAtMostOneErrorAndTheNextCallIsRight) {
  device.recordCalls();
  const auto expected = pressures({});
  const auto calls = static_cast<int>(device.calls().size());
  int errors = 0;
  for (int nth = 1; nth <= calls; ++nth) {
    device.restore();
    device.failCall("", nth, cudaErrorUnknown, false);
    const std::string error = errorOf({});
    if (!error.empty()) {
      EXPECT_EQ(error.find("ERROR: assertion failure in "), 0u) << error;
      ++errors;
    }
    EXPECT_EQ(device.liveAllocations(), 0u) << nth;
    device.restore();
    EXPECT_EQ(pressures({}), expected) << nth;
  }
  EXPECT_GT(errors, calls / 2);
}

TEST_F(FaultTest, AFailingReleaseAfterAGoodCallIsAnError) {
  device.failCall("cudaDeviceReset", 1, cudaErrorUnknown, false);
  EXPECT_EQ(errorOf({}),
            "ERROR: assertion failure in src/core/cudahelper at line 25\n"
            "       condition failed: (Cuda error when calling cudaThreadExit(): unknown "
            "error).\n\n");
}

TEST_F(FaultTest, AFailingReleaseAfterAnErrorLeavesThatErrorAlone) {
  device.failCall("cudaDeviceReset", 1, cudaErrorUnknown, false);
  EXPECT_EQ(errorOf({}, 4).find("Must have five or six input arguments"), 0u);
}

TEST_F(FaultTest, NoDeviceStateOutlivesACall) {
  device.recordCalls();
  EXPECT_EQ(errorOf({}), "");
  EXPECT_STREQ(device.calls().back().function, "cudaDeviceReset");
  EXPECT_EQ(device.liveAllocations(), 0u);
}

TEST_F(FaultTest, WithoutDoubleSupportTheCallGoesOn) {
  const auto expected = pressures({});
  device.failCall("cudaMemcpyToSymbol", 1, cudaErrorInvalidSymbol, false);
  const host::Outcome outcome = call({});
  EXPECT_FALSE(outcome.error);
  EXPECT_EQ(outcome.standardError, "Support for double not found\n");
  EXPECT_EQ(outcome.results.at(0).re[0], expected[0].real());
}

TEST_F(FaultTest, PoisonedDeviceMemoryNeverShows) {
  Arguments arguments;
  arguments.points = host::matrix(3, 2, {0, 0, 0.01, 0.001, 0.002, 0.02});
  const auto expected = pressures(arguments);
  device.poisonFreshMemory();
  EXPECT_EQ(pressures(arguments), expected);
}

}  // namespace
