#include "support/EveryCall.h"

#include <regex>
#include <string>
#include <vector>

#include "gateway/EmulatedGatewayTest.h"

using support::Ending;
using support::EveryCall;

// Every call of the runtime fails that a call of the module makes. The host ends the process when
// an error is raised while another one unwinds.

namespace {

class GatewayEveryCallTest : public EmulatedGatewayTest {
 protected:
  GatewayEveryCallTest() { arguments.points = pointsForThreads(); }

  Ending endingOf(int nlhs, const std::vector<mxArray>& inputs) {
    const host::Outcome outcome = module.call(nlhs, inputs);
    Ending ending;
    ending.outputs = {outcome.printed, outcome.standardOutput};
    ending.standardError = outcome.standardError;
    for (const mxArray& result : outcome.results)
      for (std::size_t i = 0; i < result.re.size(); ++i)
        ending.values.emplace_back(result.re[i], result.im[i]);
    const std::string error = outcome.error.value_or("");
    static const std::regex report(
        "ERROR: assertion failure in (.*) at line ([0-9]+)\n"
        "       condition failed: \\((.*)\\)\\.\n\n");
    std::smatch match;
    if (std::regex_match(error, match, report))
      ending.reports.push_back({match[3], std::stoi(match[2]), match[1]});
    else
      ending.otherError = error;
    EXPECT_LE(outcome.errorsRaised, 1);
    return ending;
  }

  void failEach(int nlhs, const std::vector<mxArray>& inputs) {
    EveryCall(device).failEach(
        {[&] { return endingOf(nlhs, inputs); }, [&] { device.restore(); }, [] {}});
  }

  Arguments arguments;
};

TEST_F(GatewayEveryCallTest, FailsAsOneErrorInACallWithAnOrder) { failEach(1, arguments.first(7)); }

TEST_F(GatewayEveryCallTest, FailsAsOneErrorInACallWithATable) {
  arguments.nabscissas = host::matrix(4, 2, {0.861136, 0.347855, 0.339981, 0.652145, 0, 0, 0, 0});
  failEach(1, arguments.first(7));
}

TEST_F(GatewayEveryCallTest, FailsAsOneErrorInACallForTheVersion) {
  failEach(0, {host::text("info")});
}

TEST_F(GatewayEveryCallTest, LeavesTheErrorOfAWrongCallAlone) {
  failEach(1, arguments.first(4));
  arguments.mode = host::text("cpu");
  failEach(1, arguments.first(7));
}

}  // namespace
