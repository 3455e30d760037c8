#include "core/ErrorHandler.h"

#include <gtest/gtest.h>

#include <sstream>

#include "core/ErrorReport.h"
#include "support/CommaLocale.h"

using pistonfield::DefaultErrorHandler;
using pistonfield::ErrorHandler;

namespace {

class CountingHandler : public ErrorHandler {
 public:
  explicit CountingHandler(int& deletions) : deletions_(deletions) {}
  ~CountingHandler() override { ++deletions_; }
  void fail(const char*, int, const char*) override {}

 private:
  int& deletions_;
};

class ErrorHandlerTest : public testing::Test {
 protected:
  void TearDown() override { ErrorHandler::setErrorHandler(nullptr); }
};

TEST_F(ErrorHandlerTest, ReportHasTwoLinesAndAnEmptyOne) {
  std::ostringstream report;
  pistonfield::writeErrorReport(report, "i<N", 48, "src/core/Vector");
  EXPECT_EQ(report.str(),
            "ERROR: assertion failure in src/core/Vector at line 48\n"
            "       condition failed: (i<N).\n"
            "\n");
}

TEST_F(ErrorHandlerTest, ALocaleChangesNoLineNumber) {
  const support::CommaLocale commas;
  std::ostringstream report;
  pistonfield::writeErrorReport(report, "i<N", 1234, "src/core/Vector");
  EXPECT_NE(report.str().find("at line 1234\n"), std::string::npos) << report.str();
}

TEST(ErrorHandlerDeathTest, WithoutHandlerAFailedCheckReportsAndAborts) {
  // The first use of the handler in this process.
  EXPECT_EXIT(pistonfield::fail("i<N", {"src/core/Vector", 48}), testing::KilledBySignal(SIGABRT),
              "^ERROR: assertion failure in src/core/Vector at line 48\n"
              "       condition failed: \\(i<N\\)\\.\n\n$");
}

TEST(ErrorHandlerDeathTest, WithoutHandlerTheStaticDefaultAnswers) {
  EXPECT_EQ(ErrorHandler::getErrorHandler(), &DefaultErrorHandler::theDefaultErrorHandler);
}

TEST_F(ErrorHandlerTest, NullInstallsANewDefaultHandler) {
  ErrorHandler::setErrorHandler(nullptr);
  ErrorHandler* const handler = ErrorHandler::getErrorHandler();
  EXPECT_NE(dynamic_cast<DefaultErrorHandler*>(handler), nullptr);
  EXPECT_NE(handler, &DefaultErrorHandler::theDefaultErrorHandler);
}

TEST_F(ErrorHandlerTest, InstallingASecondHandlerDeletesTheFirstOnce) {
  int first = 0;
  int second = 0;
  ErrorHandler::setErrorHandler(new CountingHandler(first));
  EXPECT_EQ(first, 0);
  auto* const handler = new CountingHandler(second);
  ErrorHandler::setErrorHandler(handler);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 0);
  EXPECT_EQ(ErrorHandler::getErrorHandler(), handler);
  ErrorHandler::setErrorHandler(nullptr);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 1);
}

}  // namespace
