#include "benchmarks/CpuTimes.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>

namespace {

double cpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         1e-6 * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

}  // namespace

std::vector<double> secondsOf(const std::vector<std::function<void()>>& tasks) {
  std::vector<double> least(tasks.size(), 1e300);
  const double start = cpuSeconds();
  for (int round = 0; round < 3 || (round < 30 && cpuSeconds() - start < 1.5); ++round)
    for (std::size_t n = 0; n < tasks.size(); ++n) {
      const double before = cpuSeconds();
      tasks[n]();
      least[n] = std::min(least[n], cpuSeconds() - before);
    }
  return least;
}

double peakOf(const std::vector<std::complex<double>>& pressures) {
  double peak = 0;
  for (const std::complex<double>& p : pressures) peak = std::max(peak, std::abs(p));
  return peak;
}

pistonfield::FieldOptions within(double tolerance) {
  pistonfield::FieldOptions options;
  options.tolerance = tolerance;
  return options;
}

void printProcessor() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);)
    if (line.rfind("model name", 0) == 0) {
      std::printf("%s\n", line.substr(line.find(": ") + 2).c_str());
      return;
    }
}
