#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <vector>

namespace turns {

/// One of the tasks that a benchmark compares.
struct Work {
  std::function<void()> prepare;  ///< runs before each turn and is not timed
  std::function<void()> run;
};

/// Returns the seconds that one run of each task takes. The tasks alternate, in turns of a fiftieth
/// of a second or at least one run, and the fastest turn of each counts. A slowdown of the machine
/// that lasts longer than a turn therefore affects all tasks, and a shorter one affects none of the
/// fastest turns.
std::vector<double> seconds(benchmark::State& state, const std::vector<Work>& works);

/// Settings that are common to all benchmarks of alternating tasks.
void compare(benchmark::internal::Benchmark* comparison);

}  // namespace turns
