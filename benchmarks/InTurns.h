#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <vector>

namespace turns {

/// Work that is compared with other work.
struct Work {
  std::function<void()> prepare;  ///< before each turn; its time does not count
  std::function<void()> run;
};

/// The seconds that a run of each takes. They are done in turns, of a fiftieth of a second or one
/// run: what slows the machine for longer than that slows all of them, and what slows it for less
/// does not count, since of the turns of each it is the fastest.
std::vector<double> seconds(benchmark::State& state, const std::vector<Work>& works);

/// What benchmarks of work in turns have in common.
void compare(benchmark::internal::Benchmark* comparison);

}  // namespace turns
