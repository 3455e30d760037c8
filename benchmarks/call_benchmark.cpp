#include <benchmark/benchmark.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "benchmarks/Fields.h"
#include "host/MexHost.h"

// Times the whole call, made as a host makes it, with its progress lines sent to a file.
// `in_kernel` is the kernel's share of that time: the single-precision kernel is timed for the same
// list, alternating with the call.

namespace {

const char* modulePath() {
  const char* const path = std::getenv("PISTONFIELD_GATEWAY_MODULE");
  return path ? path : PISTONFIELD_GATEWAY_MODULE;
}

void call(benchmark::State& state) {
  const host::MexHost module(modulePath());
  const auto points = static_cast<int>(state.range(0));
  std::vector<float> positions = fields::cloud(points);
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
  const auto load = reinterpret_cast<decltype(&setCudaIntegratorParameters)>(
      module.symbol("setCudaIntegratorParameters"));
  const auto launch = reinterpret_cast<decltype(&RectangularPiston_func_unstructured)>(
      module.symbol("RectangularPiston_func_unstructured"));
  std::vector<pistonfield::Complex> pressures(static_cast<std::size_t>(points));
  const auto timeKernel = [&] {
    testing::internal::CaptureStdout();
    load("RectangularPiston", 10);
    *timing = 1;
    launch(pressures.data(), points, positions.data(), fields::l, fields::s, fields::k);
    *timing = 0;
    testing::internal::GetCapturedStdout();
    return *kernelTime * 1e-6;
  };
  double inKernel = 0, whole = 0;
  for (auto _ : state) {
    const host::Outcome outcome = module.call(1, arguments);
    if (outcome.error) {
      state.SkipWithError(outcome.error->c_str());
      break;
    }
    state.SetIterationTime(outcome.seconds);
    whole += outcome.seconds;
    inKernel += timeKernel();
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
