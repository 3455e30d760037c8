#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

// A test program that the test of scripts/gpu-check substitutes for the real ones. Its tests write
// the process they run in to the file named by LOG. If NO_DEVICE is set, one of them skips itself,
// as tests do without a GPU.

namespace {

class FakeTest : public testing::Test {
 protected:
  void SetUp() override { std::ofstream(std::getenv("LOG"), std::ios::app) << getpid() << "\n"; }
};

TEST_F(FakeTest, NeedsNothing) {}

TEST_F(FakeTest, NeedsADevice) {
  if (std::getenv("NO_DEVICE")) GTEST_SKIP() << "no CUDA device on this machine";
}

TEST_F(FakeTest, Fails) { EXPECT_FALSE(std::getenv("FAILS")); }

using FakeDeathTest = FakeTest;

TEST_F(FakeDeathTest, Forks) { EXPECT_FALSE(std::getenv("UNDER_SANITIZER")); }

}  // namespace
