#include "field/spectrum/Paths.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "field/Vectors.h"

namespace pistonfield {
namespace {

struct Lengths {
  double least, most;
};

/// Of the paths from a piston. The wave that is added straight behind it comes earlier by twice the
/// distance.
Lengths pathsFrom(const Field::Piston& piston, const Position& point) {
  const Position from = difference(point, piston.centre);
  const double x = std::fabs(dot(piston.axes[0], from)), y = std::fabs(dot(piston.axes[1], from)),
               z = dot(piston.axes[2], from), a = piston.width / 2, b = piston.height / 2;
  // Rounding decides where it begins.
  const double besideX = std::max(x - a * 1.000001, 0.0), besideY = std::max(y - b * 1.000001, 0.0);
  const bool isBehind = z < 0 && besideX == 0 && besideY == 0;
  return {isBehind ? z : std::sqrt(besideX * besideX + besideY * besideY + z * z),
          std::sqrt((x + a) * (x + a) + (y + b) * (y + b) + z * z)};
}

}  // namespace

Paths::Paths(const Points& points, std::size_t first, std::size_t count)
    : x(count), y(count), z(count), middle(count) {
  points.read(first, count, x.data(), y.data(), z.data());
}

void Paths::measure(const Field::Piston* pistons, std::size_t count) {
  range = most = 0;
  for (std::size_t n = 0; n < middle.size(); ++n) {
    const Position point = {x[n], y[n], z[n]};
    Lengths all{std::numeric_limits<double>::infinity(), 0};
    if (finite(point))
      for (std::size_t i = 0; i < count; ++i) {
        const Lengths paths = pathsFrom(pistons[i], point);
        all = {std::min(all.least, paths.least), std::max(all.most, paths.most)};
      }
    else
      all.least = 0;
    middle[n] = (all.least + all.most) / 2;
    most = std::max(most, all.most);
    // With the rounding of the lengths.
    range = std::max(range, all.most - all.least + all.most * 0x1p-49);
  }
}

}  // namespace pistonfield
