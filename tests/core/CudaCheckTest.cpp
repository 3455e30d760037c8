#include "core/CudaCheck.h"

#include "support/DeviceTest.h"

using support::Failure;
using support::failureOf;

namespace {

constexpr pistonfield::SourceLocation here{"src/some/File", 7};

class CudaCheckTest : public support::DeviceTest {
 protected:
  /// Leaves an error pending in the runtime.
  static void leaveAnError() { cudaSetDevice(-1); }
};

TEST_F(CudaCheckTest, StageCheckPassesWhenNothingIsPending) {
  testing::internal::CaptureStderr();
  const Failure failure = failureOf([] { pistonfield::stageCheck("some stage", here); });
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(failure.condition, "");
}

TEST_F(CudaCheckTest, StageCheckPrintsFailsAndClears) {
  leaveAnError();
  testing::internal::CaptureStderr();
  const Failure failure = failureOf([] { pistonfield::stageCheck("some stage", here); });
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Cuda error: some stage in file 'src/some/File' in line 7 : invalid device ordinal.\n");
  EXPECT_EQ(failure.condition, "invalid device ordinal");
  EXPECT_EQ(failure.file, "src/some/File");
  EXPECT_EQ(failure.line, 7);
  EXPECT_EQ(cudaGetLastError(), cudaSuccess);
}

TEST_F(CudaCheckTest, CallCheckFailsWithTheCallsTextAndPrintsNothing) {
  testing::internal::CaptureStderr();
  const Failure failure = failureOf(
      [] { pistonfield::callCheck(cudaErrorMemoryAllocation, "cudaMalloc( a,b )", here); });
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(failure.condition, "Cuda error when calling cudaMalloc( a,b ): out of memory");
  EXPECT_EQ(failure.file, "src/some/File");
  EXPECT_EQ(failure.line, 7);
}

TEST_F(CudaCheckTest, CallCheckPassesOnSuccess) {
  EXPECT_EQ(failureOf([] { pistonfield::callCheck(cudaSuccess, "f()", here); }).condition, "");
}

}  // namespace
