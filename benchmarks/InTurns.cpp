#include "benchmarks/InTurns.h"

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace turns {

std::vector<double> seconds(benchmark::State& state, const std::vector<Work>& works) {
  using Clock = std::chrono::steady_clock;
  using Seconds = std::chrono::duration<double>;
  constexpr Seconds turn{0.02};
  std::vector<std::vector<double>> taken(works.size());
  for (auto _ : state)
    for (std::size_t n = 0; n < works.size(); ++n) {
      works[n].prepare();
      Seconds elapsed{0};
      int runs = 0;
      for (const auto start = Clock::now(); elapsed < turn; elapsed = Clock::now() - start) {
        works[n].run();
        ++runs;
      }
      taken[n].push_back(elapsed.count() / runs);
    }
  std::vector<double> result;
  result.reserve(taken.size());
  for (const std::vector<double>& turns : taken)
    result.push_back(*std::min_element(turns.begin(), turns.end()));
  return result;
}

void compare(benchmark::internal::Benchmark* comparison) {
  comparison->UseRealTime()->Unit(benchmark::kMillisecond)->MinTime(0.3);
}

}  // namespace turns
