#include <cuda_runtime.h>

#include "emulation/TestControl.h"
#include "gateway/GatewayTest.h"

// Failures of the device below the gateway, asked for through the module's own test control.

namespace {

class FaultTest : public GatewayTest {
 protected:
  FaultTest()
      : device(reinterpret_cast<decltype(&emulationTestControl)>(
            module.symbol("emulationTestControl"))()) {}
  void TearDown() override { device.restore(); }

  emulation::TestControl& device;
};

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
