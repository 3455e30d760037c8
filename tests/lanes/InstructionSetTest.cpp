#include "lanes/InstructionSet.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>

using pistonfield::has;
using pistonfield::InstructionSet;
using pistonfield::instructionSet;
using pistonfield::limitInstructionSet;

namespace {

class InstructionSetTest : public testing::Test {
 protected:
  ~InstructionSetTest() override { limitInstructionSet(before_); }

  static InstructionSet limitedTo(InstructionSet newest) {
    limitInstructionSet(newest);
    return instructionSet();
  }
  static InstructionSet unlimited() { return limitedTo(InstructionSet::AVX512); }

 private:
  const InstructionSet before_ = limitInstructionSet(InstructionSet::AVX512);
};

TEST_F(InstructionSetTest, WithoutALimitItIsTheNewestOfTheMachine) {
  const InstructionSet newest = unlimited();
  EXPECT_TRUE(has(newest));
  for (const InstructionSet set : {InstructionSet::AVX2, InstructionSet::AVX512})
    EXPECT_EQ(has(set), set <= newest);
}

TEST_F(InstructionSetTest, ALimitHoldsUntilTheNext) {
  const InstructionSet upToAvx2 =
      has(InstructionSet::AVX2) ? InstructionSet::AVX2 : InstructionSet::OLDEST;
  const InstructionSet newest = unlimited();
  EXPECT_TRUE(has(InstructionSet::OLDEST));
  EXPECT_EQ(limitedTo(InstructionSet::OLDEST), InstructionSet::OLDEST);
  EXPECT_EQ(instructionSet(), InstructionSet::OLDEST);
  EXPECT_EQ(limitedTo(InstructionSet::AVX2), upToAvx2);
  EXPECT_EQ(limitedTo(InstructionSet::AVX512), newest);
}

TEST_F(InstructionSetTest, ALimitReturnsTheOneBefore) {
  EXPECT_EQ(limitInstructionSet(InstructionSet::AVX2), InstructionSet::AVX512);
  EXPECT_EQ(limitInstructionSet(InstructionSet::OLDEST), InstructionSet::AVX2);
  EXPECT_EQ(limitInstructionSet(InstructionSet::AVX512), InstructionSet::OLDEST);
}

#if defined(__x86_64__)

/// What the operating system knows about the processor.
std::set<std::string> flagsOfProcessor() {
  std::ifstream facts("/proc/cpuinfo");
  for (std::string line; std::getline(facts, line);)
    if (line.rfind("flags", 0) == 0) {
      std::istringstream words(line);
      std::set<std::string> flags;
      for (std::string word; words >> word;) flags.insert(word);
      return flags;
    }
  return {};
}

TEST_F(InstructionSetTest, ItIsWhatTheOperatingSystemReports) {
  const std::set<std::string> flags = flagsOfProcessor();
  if (flags.empty()) GTEST_SKIP() << "needs /proc/cpuinfo";
  EXPECT_EQ(has(InstructionSet::AVX2), flags.count("avx2") && flags.count("fma"));
  EXPECT_EQ(has(InstructionSet::AVX512), flags.count("avx512f") && flags.count("avx512dq"));
}

#endif

}  // namespace
