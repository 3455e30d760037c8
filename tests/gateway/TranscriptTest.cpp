#include <regex>

#include "gateway/GatewayTest.h"
#include "support/ReferenceField.h"

// What a call prints: through the host, and on standard output.

namespace {

class TranscriptTest : public GatewayTest {
 protected:
  static std::string golden(const std::string& name) {
    return support::contents(support::testFile("golden/" + name));
  }
};

TEST_F(TranscriptTest, OnePointAtOrder10) {
  const host::Outcome outcome = call({}, 5);
  EXPECT_EQ(outcome.printed, golden("one_point_order_10.host"));
  EXPECT_EQ(outcome.standardOutput, golden("one_point_order_10.stdout"));
  EXPECT_EQ(outcome.standardError, "");
}

TEST_F(TranscriptTest, OnePointWithATableOf5Rows) {
  Arguments arguments;
  arguments.nabscissas =
      host::matrix(5, 2,
                   {-0.90617984593866396, 0.23692688505618911, -0.53846931010568311,
                    0.47862867049936647, 0, 0.56888888888888889, 0, 0, 0, 0});
  const host::Outcome outcome = call(arguments);
  EXPECT_EQ(outcome.printed, golden("one_point_table_5x2.host"));
  EXPECT_EQ(outcome.standardOutput, golden("one_point_table_5x2.stdout"));
  EXPECT_EQ(outcome.standardError, "");
}

TEST_F(TranscriptTest, Info) {
  const host::Outcome outcome = module.call(0, {host::text("info")});
  EXPECT_EQ(outcome.standardOutput, "");
  EXPECT_EQ(outcome.standardError, "");

  // Replaces what differs between builds and commits by the placeholders of the golden text.
  std::string text = outcome.printed;
  const std::string date = "(\\d{4}/\\d\\d/\\d\\d \\d\\d:\\d\\d:\\d\\d|unknown)";
  const std::string revision = "[0-9a-z.]+";
  const auto replace = [&](const std::string& what, const std::string& by) {
    text = std::regex_replace(text, std::regex(what), by);
  };
  replace("Compiled on [A-Z][a-z]{2} [ 123]\\d \\d{4} \\d\\d:\\d\\d:\\d\\d\n",
          "Compiled on <build>\n");
  replace("\\$Id: version,v " + revision + " " + date + " pistonfield \\$",
          "$$Id: version,v <revision> <commit> pistonfield $$");
  replace("\\$Date: " + date + " \\$", "$$Date: <commit> $$");
  replace("\\$Revision: " + revision + " \\$", "$$Revision: <revision> $$");
  EXPECT_EQ(text, golden("info.host"));
}

TEST_F(TranscriptTest, ArgumentErrorsBeforeTheSidesPrintNothing) {
  for (const std::size_t count : {4u, 8u}) {
    const host::Outcome outcome = call({}, count);
    EXPECT_EQ(outcome.printed + outcome.standardOutput + outcome.standardError, "");
  }
  Arguments arguments;
  arguments.points = host::text("abc");
  const host::Outcome outcome = call(arguments);
  EXPECT_EQ(outcome.printed + outcome.standardOutput + outcome.standardError, "");
}

TEST_F(TranscriptTest, TheFirstPointIsEchoedBeforeTheModeIsLookedAt) {
  Arguments arguments;
  arguments.mode = host::text("gpu");
  arguments.points = host::matrix(3, 1, {1.23456789, -1e-7, 1e10});
  const host::Outcome outcome = call(arguments);
  EXPECT_EQ(outcome.printed, "l=0.010000, s=0.005000, k=4188.790000\n");
  EXPECT_EQ(outcome.standardOutput, "1.23457 -1e-07 1e+10\n");
}

TEST_F(TranscriptTest, SidesArePrintedBeforeThePointsAreCounted) {
  Arguments arguments;
  arguments.points = host::matrix(2, 1, {1, 2});
  const host::Outcome outcome = call(arguments);
  EXPECT_EQ(outcome.printed, "l=0.010000, s=0.005000, k=4188.790000\n");
  EXPECT_EQ(outcome.standardOutput, "");
}

}  // namespace
