#include "benchmarks/KernelOnField.h"

#include <string>
#include <vector>

#include "benchmarks/Fields.h"
#include "core/Progress.h"
#include "support/DeviceTest.h"

// The kernel must have ended when a benchmark reads the clock.

namespace {

class KernelOnFieldTest : public support::EmulationTest {
 protected:
  void TearDown() override {
    pistonfield::showProgress(true);  // which a benchmark switches off
    EmulationTest::TearDown();
  }
};

TEST_F(KernelOnFieldTest, ARunEndsWithTheKernel) {
  KernelOnField kernel(fields::cloud(1000));
  ASSERT_TRUE(kernel.isReady());
  KernelOnField::setOrder(10);
  device.recordCalls();
  kernel.run();
  EXPECT_EQ(functionsCalled(),
            (std::vector<std::string>{"cudaGetLastError", "cudaLaunchKernel", "cudaGetLastError",
                                      "cudaDeviceSynchronize"}));
}

TEST_F(KernelOnFieldTest, AKernelThatFailsEndsTheBenchmark) {
  KernelOnField kernel(fields::cloud(1000));
  device.failCall("cudaDeviceSynchronize", 1, cudaErrorLaunchFailure, false);
  EXPECT_EQ(support::failureOf([&] { kernel.run(); }).condition,
            "Cuda error when calling cudaDeviceSynchronize(): unspecified launch failure");
}

}  // namespace
