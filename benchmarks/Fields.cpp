#include "benchmarks/Fields.h"

#include <sched.h>

#include <cmath>
#include <cstdlib>
#include <iostream>
#include <random>

namespace fields {
namespace {

/// The cores that this process may use.
const cpu_set_t& given() {
  static const cpu_set_t all = [] {
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) != 0) {
      std::cerr << "cannot tell which cores there are\n";
      std::exit(1);
    }
    return set;
  }();
  return all;
}

}  // namespace

std::vector<float> cloud(int points) {
  std::mt19937 random(1);
  std::uniform_real_distribution<float> x(-s, s), y(-l, l), z(wavelength / 4, 15 * wavelength);
  std::vector<float> positions;
  positions.reserve(3 * static_cast<std::size_t>(points));
  for (int n = 0; n < points; ++n)
    positions.insert(positions.end(), {x(random), y(random), z(random)});
  return positions;
}

std::vector<float> grid(int points) {
  const int side = static_cast<int>(std::floor(std::cbrt(points) + 1e-6));
  const auto place = [&](int index, float first, float last) {
    return first + (last - first) * static_cast<float>(index) / static_cast<float>(side - 1);
  };
  std::vector<float> positions;
  for (int m = 0; m < side; ++m)
    for (int j = 0; j < side; ++j)
      for (int i = 0; i < side; ++i)
        positions.insert(positions.end(), {place(i, -s, s), place(j, -l, l),
                                           place(m, wavelength / 4, 15 * wavelength)});
  return positions;
}

std::int64_t nodes(const std::vector<float>& positions, int order) {
  const auto intervals = [](float offset, float side) {
    const float distance = std::fabs(offset);
    return distance > 1e-7f && distance <= side / 2 ? 2 : 1;
  };
  std::int64_t edges = 0;
  for (std::size_t n = 0; n < positions.size(); n += 3)
    edges += std::int64_t{2} * (intervals(positions[n], s) + intervals(positions[n + 1], l));
  return edges * order;
}

int cores() { return CPU_COUNT(&given()); }

void useCores(int count, int first) {
  cpu_set_t some;
  CPU_ZERO(&some);
  for (int core = 0, number = 0; core < CPU_SETSIZE; ++core)
    if (CPU_ISSET(core, &given())) {
      if (count == 0 || (first <= number && number < first + count)) CPU_SET(core, &some);
      ++number;
    }
  if (sched_setaffinity(0, sizeof some, &some) != 0) {
    std::cerr << "cannot choose the cores to run on\n";
    std::exit(1);
  }
}

}  // namespace fields
