#include "core/InstructionSet.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

using pistonfield::has;
using pistonfield::InstructionSet;
using pistonfield::instructionSet;

namespace {

class InstructionSetTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const char* const set = std::getenv(variable)) {
      wasSet_ = true;
      before_ = set;
    }
  }
  void TearDown() override {
    if (wasSet_)
      setenv(variable, before_.c_str(), 1);
    else
      unsetenv(variable);
  }

  static InstructionSet limitedTo(const char* text) {
    setenv(variable, text, 1);
    return instructionSet();
  }
  static InstructionSet unlimited() {
    unsetenv(variable);
    return instructionSet();
  }

 private:
  static constexpr const char* variable = "PISTONFIELD_INSTRUCTION_SET";
  bool wasSet_ = false;
  std::string before_;
};

constexpr InstructionSet sets[] = {InstructionSet::OLDEST, InstructionSet::AVX2,
                                   InstructionSet::AVX512};

TEST_F(InstructionSetTest, EveryMachineHasTheOldest) { EXPECT_TRUE(has(InstructionSet::OLDEST)); }

TEST_F(InstructionSetTest, WithoutALimitItIsTheNewestOfTheMachine) {
  const InstructionSet newest = unlimited();
  EXPECT_TRUE(has(newest));
  for (const InstructionSet set : sets)
    if (set > newest) {
      EXPECT_FALSE(has(set));
    }
}

TEST_F(InstructionSetTest, TheEnvironmentSetsALimit) {
  const InstructionSet upToAvx2 =
      has(InstructionSet::AVX2) ? InstructionSet::AVX2 : InstructionSet::OLDEST;
  const InstructionSet newest = unlimited();
  EXPECT_EQ(limitedTo("oldest"), InstructionSet::OLDEST);
  EXPECT_EQ(limitedTo("avx2"), upToAvx2);
  EXPECT_EQ(limitedTo("avx512"), newest);
  EXPECT_EQ(unlimited(), newest);
}

TEST_F(InstructionSetTest, OtherTextIsNoLimit) {
  const InstructionSet newest = unlimited();
  for (const char* const text :
       {"", " ", "OLDEST", "Oldest", "oldest ", "avx", "sse2", "0", "none"})
    EXPECT_EQ(limitedTo(text), newest) << '"' << text << '"';
}

TEST_F(InstructionSetTest, NeverNamesASetThatTheMachineLacks) {
  EXPECT_TRUE(has(unlimited()));
  for (const char* const text : {"oldest", "avx2", "avx512", "", "unknown"})
    EXPECT_TRUE(has(limitedTo(text))) << '"' << text << '"';
}

}  // namespace
