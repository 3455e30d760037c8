#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

#include "benchmarks/Fields.h"
#include "host/MexHost.h"

// The whole call, as a host makes it, its progress lines going to a file. `in_kernel` is the share
// of the time between the launch of the kernel and its end.

namespace {

const char* modulePath() {
  const char* const path = std::getenv("PISTONFIELD_GATEWAY_MODULE");
  return path ? path : PISTONFIELD_GATEWAY_MODULE;
}

void call(benchmark::State& state) {
  const host::MexHost module(modulePath());
  const auto points = static_cast<int>(state.range(0));
  const std::vector<float> positions = fields::cloud(points);
  const std::vector<mxArray> arguments = {
      host::matrix(3, static_cast<std::size_t>(points), {positions.begin(), positions.end()}),
      host::scalar(0),
      host::scalar(static_cast<double>(fields::l)),
      host::scalar(static_cast<double>(fields::s)),
      host::scalar(static_cast<double>(fields::k)),
      host::text("cuda"),
      host::scalar(10)};
  auto* const timing = static_cast<int*>(module.symbol("do_timing"));
  const auto* const kernelTime = static_cast<double*>(module.symbol("global_time"));
  *timing = 1;
  double inKernel = 0, whole = 0;
  for (auto _ : state) {
    const host::Outcome outcome = module.call(1, arguments);
    if (outcome.error) {
      state.SkipWithError(outcome.error->c_str());
      break;
    }
    state.SetIterationTime(outcome.seconds);
    whole += outcome.seconds;
    inKernel += *kernelTime * 1e-6;
  }
  state.counters["points"] = points;
  state.counters["in_kernel"] = inKernel / whole;
}
BENCHMARK(call)
    ->ArgName("points")
    ->Arg(1)
    ->Arg(1000)
    ->Arg(100000)
    ->Arg(1000000)
    ->UseManualTime()
    ->MinTime(0.2)
    ->Unit(benchmark::kMillisecond);

}  // namespace
