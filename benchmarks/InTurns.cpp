#include "benchmarks/InTurns.h"

#include <chrono>
#include <cstddef>

namespace turns {

std::vector<double> seconds(benchmark::State& state, const std::vector<Work>& works) {
  using Clock = std::chrono::steady_clock;
  using Seconds = std::chrono::duration<double>;
  constexpr Seconds turn{0.02};
  struct Sum {
    Seconds time{0};
    int runs = 0;
  };
  std::vector<Sum> sums(works.size());
  for (auto _ : state)
    for (std::size_t n = 0; n < works.size(); ++n) {
      works[n].prepare();
      Seconds elapsed{0};
      for (const auto start = Clock::now(); elapsed < turn; elapsed = Clock::now() - start) {
        works[n].run();
        ++sums[n].runs;
      }
      sums[n].time += elapsed;
    }
  std::vector<double> result;
  result.reserve(sums.size());
  for (const Sum& sum : sums) result.push_back(sum.time.count() / sum.runs);
  return result;
}

void compare(benchmark::internal::Benchmark* comparison) {
  comparison->UseRealTime()->Unit(benchmark::kMillisecond)->MinTime(0.3);
}

}  // namespace turns
