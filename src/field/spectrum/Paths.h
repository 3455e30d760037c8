#pragma once

#include <vector>

#include "field/Points.h"

namespace pistonfield {

/// Points, and lengths r next to those of the paths from pistons to each.
struct Paths {
  std::vector<double> x, y, z, middle;
  double range = 0;  ///< at each point, paths are within range/2 of r
  double most = 0;   ///< the largest length

  /// The points first ... first + count − 1. Those that are not finite have no r.
  Paths(const Points& points, std::size_t first, std::size_t count);

  void measure(const Field::Piston* pistons, std::size_t count);
};

}  // namespace pistonfield
