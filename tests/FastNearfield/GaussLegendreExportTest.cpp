#include "FastNearfield/GaussLegendreExport.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "FastNearfield/GaussLegendre.h"
#include "support/CommaLocale.h"
#include "support/ReferenceField.h"

using pistonfield::legendre_handle;

namespace {

/// A test that runs in its own folder.
class GaussLegendreExportTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = testing::TempDir() + "rule-XXXXXX";
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder_ = name;
    before_ = std::filesystem::current_path();
    std::filesystem::current_path(folder_);
  }
  void TearDown() override {
    std::filesystem::current_path(before_);
    std::filesystem::remove_all(folder_);
    std::cout << std::setprecision(6);
  }

  static std::string printed(int order, const std::string& output) {
    testing::internal::CaptureStdout();
    legendre_handle(order, output);
    return testing::internal::GetCapturedStdout();
  }

  static std::string golden(const std::string& name) {
    return support::contents(support::testFile("golden/rules/" + name));
  }

 private:
  std::filesystem::path folder_, before_;
};

/// In capitals, in small letters, and as the golden files call them.
constexpr const char* syntaxes[][3] = {
    {"C++", "c++", "cpp"}, {"F77", "f77", "f77"}, {"F90", "f90", "f90"}, {"MAT", "mat", "mat"}};

constexpr const char* parts[] = {"_w.txt", "_x.txt", "_r.txt"};

TEST_F(GaussLegendreExportTest, ListingsAndFilesAreThoseOfTheGoldenFiles) {
  for (const int order : {16, 1, 2, 3}) {  // the files of a longer rule are overwritten
    const std::string n = std::to_string(order);
    for (const auto& [capitals, small, name] : syntaxes) {
      EXPECT_EQ(printed(order, capitals), golden(n + "." + name + ".txt"));
      EXPECT_EQ(printed(order, small), golden(n + "." + name + ".txt"));
    }
    printed(order, "rule");
    for (const char* part : parts)
      EXPECT_EQ(support::contents(std::string("rule") + part), golden(n + part));
  }
}

TEST_F(GaussLegendreExportTest, ALocaleChangesNoNumber) {
  const auto everything = [] {
    std::vector<std::string> texts;
    for (const auto& syntax : syntaxes) texts.push_back(printed(1001, syntax[0]));
    printed(1001, "rule");
    for (const char* part : parts) texts.push_back(support::contents(std::string("rule") + part));
    return texts;
  };
  const std::vector<std::string> expected = everything();
  const support::CommaLocale commas;
  EXPECT_EQ(everything(), expected);

  std::ostringstream ofTheLocale;
  ofTheLocale << 1234.5;
  EXPECT_EQ(ofTheLocale.str(), "1.234,5");
  testing::internal::CaptureStdout();
  std::cout << 1234.5;
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "1.234,5");
}

TEST_F(GaussLegendreExportTest, AnyOtherSpellingIsAFileRoot) {
  EXPECT_EQ(printed(2, "Mat"),
            "\n"
            "  Creating quadrature files.\n"
            "\n"
            "  Root file name is     \"Mat\".\n"
            "\n"
            "  Weight file will be   \"Mat_w.txt\".\n"
            "  Abscissa file will be \"Mat_x.txt\".\n"
            "  Region file will be   \"Mat_r.txt\".\n");
  EXPECT_TRUE(std::filesystem::exists("Mat_w.txt"));
  printed(2, "cpp");
  EXPECT_TRUE(std::filesystem::exists("cpp_x.txt"));
}

TEST_F(GaussLegendreExportTest, AnEmptyRootNamesFilesInTheCurrentFolder) {
  printed(2, "");
  for (const char* part : parts) EXPECT_TRUE(std::filesystem::exists(part)) << part;
}

TEST_F(GaussLegendreExportTest, ThePrecisionOfStandardOutputStaysAt16) {
  printed(2, "C++");
  EXPECT_EQ(std::cout.precision(), 16);
}

TEST_F(GaussLegendreExportTest, FilesThatCannotBeOpenedAreSaid) {
  testing::internal::CaptureStderr();
  printed(2, "no/such/folder/rule");
  const std::string one =
      "\n"
      "DTABLE_WRITE0 - Fatal error!\n"
      "  Could not open the output file.\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), one + one + one);
}

TEST_F(GaussLegendreExportTest, TablesHaveLinesOfSeveralValues) {
  double table[] = {1, 2.5, -3, 0.1};
  pistonfield::dtable_write0("table.txt", 2, 2, table);
  const auto blanks = [](std::size_t count) { return std::string(count, ' '); };
  EXPECT_EQ(support::contents("table.txt"), blanks(23) + "1  " + blanks(21) + "2.5  \n" +
                                                blanks(22) + "-3  " + blanks(21) + "0.1  \n");
}

TEST_F(GaussLegendreExportTest, ANegativeOrderFailsInTheAllocation) {
  EXPECT_THROW(legendre_handle(-1, "C++"), std::bad_alloc);
}

TEST(GaussLegendreExportDeathTest, ALocaleChangesNoOrder) {
  const auto handle = [] {
    const support::CommaLocale commas;
    dup2(STDERR_FILENO, STDOUT_FILENO);
    pistonfield::legendre_compute(-1234, nullptr, nullptr);
  };
  EXPECT_EXIT(handle(), testing::ExitedWithCode(1), "  Illegal value of ORDER = -1234\n$");
}

TEST(TimestampTest, IsTheDateAndTimeInWords) {
  testing::internal::CaptureStdout();
  pistonfield::timestamp();
  const std::string text = testing::internal::GetCapturedStdout();
  const char* const format = "%d %B %Y %I:%M:%S %p";
  std::istringstream line(text);
  std::tm time{};
  line >> std::get_time(&time, format);
  EXPECT_FALSE(line.fail());
  std::ostringstream again;
  again << std::put_time(&time, format) << "\n";
  EXPECT_EQ(text, again.str());
  time.tm_isdst = -1;
  EXPECT_LE(std::abs(std::difftime(std::time(nullptr), std::mktime(&time))), 60);
}

}  // namespace
