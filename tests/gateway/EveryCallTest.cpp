#include "support/EveryCall.h"

#include <regex>
#include <string>
#include <vector>

#include "FastNearfield/CheckedCalls.h"
#include "gateway/EmulatedGatewayTest.h"

using support::Ending;
using support::EveryCall;

// Makes every call of the runtime in a call of the module fail, one at a time. The host ends the
// process if an error is raised while another one unwinds.

namespace {

using namespace checked_calls;

class GatewayEveryCallTest : public InEitherMemory {
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

  static Steps list() {
    const Steps steps = unstructured(10000, "", launch(dim3(2, 64)));
    return GetParam() == Memory::HOSTS ? support::inHostMemory(steps) : steps;
  }

  void failEach(int nlhs, const std::vector<mxArray>& inputs, const support::Steps& steps) {
    EveryCall(device).failEach(
        {[&] { return endingOf(nlhs, inputs); }, [&] { startAfresh(GetParam()); }, [] {}, steps});
  }

  Arguments arguments;
};

TEST_P(GatewayEveryCallTest, FailsAsOneErrorInACallWithAnOrder) {
  failEach(1, arguments.first(7), start + order(10, "") + list() + end);
}

TEST_P(GatewayEveryCallTest, FailsAsOneErrorInACallWithATable) {
  arguments.nabscissas = host::matrix(4, 2, {0.861136, 0.347855, 0.339981, 0.652145, 0, 0, 0, 0});
  failEach(1, arguments.first(7), start + table("") + list() + end);
}

TEST_P(GatewayEveryCallTest, FailsAsOneErrorInACallForTheVersion) {
  failEach(0, {host::text("info")}, start + end);
}

TEST_P(GatewayEveryCallTest, LeavesTheErrorOfAWrongCallAlone) {
  failEach(1, arguments.first(4), start + silentEnd);
  arguments.mode = host::text("cpu");
  failEach(1, arguments.first(7), start + silentEnd);
}

INSTANTIATE_IN_EITHER_MEMORY(GatewayEveryCallTest);

}  // namespace
