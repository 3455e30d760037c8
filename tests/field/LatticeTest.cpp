#include "field/Lattice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <random>

#include "field/field.h"
#include "support/AnyScene.h"

// The interpolation of fields along rows, from samples in double precision.

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846, k = 2 * pi;  // lengths are in wavelengths

/// The field of a piston on a line through `origin` in the direction `along`.
class Line {
 public:
  Line(const Field::Piston& piston, const Position& origin, const Position& along)
      : field_({piston}, k), origin_(origin), along_(along) {
    options_.tolerance = 3e-11;
  }

  std::vector<std::complex<double>> at(const std::vector<double>& positions) const {
    std::vector<Position> points = {{0, 0, 0.01}};  // where the peak is of the order of 1
    for (const double t : positions)
      points.push_back(
          {origin_[0] + t * along_[0], origin_[1] + t * along_[1], origin_[2] + t * along_[2]});
    std::vector<std::complex<double>> p = field_.at(points, options_);
    p.erase(p.begin());
    return p;
  }

 private:
  Field field_;
  Position origin_, along_;
  FieldOptions options_;
};

TEST(LatticeTest, InterpolatedFieldsAreWithinTheErrorOfTheLattice) {
  std::mt19937 random(7);
  support::Chance chance(random);
  const auto maybe = [&](double value) { return random() % 2 == 0 ? value : 0; };
  constexpr int halfTapsToTry[] = {4, 6, 8, 12, 16, 24};
  double worst = 0;
  int tried = 0;
  const int rounds = std::getenv("PISTONFIELD_LONG") ? 20000 : 2000;
  for (int round = 0; round < rounds; ++round) {
    const double width = chance.ofAnySize(0.1, 60), height = chance.ofAnySize(0.1, 60);
    const double z = chance.ofAnySize(0.1, 100), error = chance.ofAnySize(1e-9, 1e-2);
    const int halfTaps = halfTapsToTry[random() % 6];
    // Rows next to edges, corners and the axis, and beside the piston; some of them turned.
    const double angle = random() % 3 == 0 ? chance.between(0, 1.57) : 0;
    const Position along = {std::cos(angle), 0, std::sin(angle)};
    const auto lattice = latticeFor(1e-3, z, k, error, halfTaps);
    if (!lattice) continue;
    const double h = 1e-3 * lattice->steps / lattice->samples;
    // The steps are so small that the lattice is the coarsest that there is; it may be finer.
    const double distance = chance.between(0.5, 1) > 0.75 ? h : h * chance.between(0.5, 1);
    const double turns = pi - std::log(2 / error) / halfTaps;
    const double coarsest = turns / std::hypot(k, std::log(4 / error) / z);
    const double spacing = round % 4 == 0 ? distance : coarsest;
    const double centre[] = {maybe(width / 2) + maybe(chance.ofAnySize(1e-3, 30)),
                             maybe(height / 2) + maybe(chance.ofAnySize(1e-3, 30))};
    // Next to a sample, too.
    const double t = round % 5 == 0 ? 1 - chance.ofAnySize(0x1p-53, 1) : chance.between(0, 1);
    // The first sample that is used is at the distance z.
    const double lowest = -(halfTaps - 1 + t) * spacing;
    const Position origin = {centre[0], centre[1], z - lowest * along[2]};
    const Line line({width, height}, origin, along);
    std::vector<double> positions = {0};
    for (int n = -halfTaps + 1; n <= halfTaps; ++n) positions.push_back((n - t) * spacing);
    const auto p = line.at(positions);
    const InterpolationKernel kernel(error);
    std::complex<double> sum = 0;
    std::vector<double> factors(2 * static_cast<std::size_t>(halfTaps));
    kernel.factors(t, halfTaps, factors.data());
    for (std::size_t n = 0; n < factors.size(); ++n) sum += factors[n] * p[n + 1];
    worst = std::max(worst, std::abs(sum - p[0]) / error);
    ++tried;
  }
  std::cout << tried << " interpolations: largest error " << worst << " of the lattice's\n";
  EXPECT_LT(worst, 1);
  EXPECT_GT(worst, 0.05);
  EXPECT_GT(tried, rounds / 2);
}

}  // namespace
}  // namespace pistonfield
