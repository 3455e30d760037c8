#include "field/Parts.h"

#include <algorithm>
#include <cmath>

#include "field/Vectors.h"

namespace pistonfield {

bool isStraightBehind(const Field::Piston& piston, const Position& p) {
  const Position from = difference(p, piston.centre);
  const auto covers = [&](std::size_t axis, double side) {
    return std::fabs(dot(piston.axes[axis], from)) <= 0.500001 * side;
  };
  return dot(piston.axes[2], from) < 0 && covers(0, piston.width) && covers(1, piston.height);
}

double roundingOfParts(const std::vector<Field::Piston>& pistons) {
  double largest = 0;
  for (const Field::Piston& piston : pistons)
    for (const double coordinate : piston.centre)
      largest = std::max(largest, std::fabs(coordinate) + (piston.width + piston.height) / 2);
  return 4 * 0x1p-53 * largest;
}

std::vector<Field::Piston> inParts(const std::vector<Field::Piston>& pistons,
                                   std::complex<double> k, const Points& points,
                                   double mostSideOfPart) {
  constexpr std::size_t most = 100'000;
  const double wavelengths = wavelengthsPerUnit(k);
  std::vector<Field::Piston> parts;
  for (const Field::Piston& piston : pistons) {
    bool isAnyBehind = false;
    for (std::size_t n = 0; n < points.count() && !isAnyBehind; ++n)
      isAnyBehind = isStraightBehind(piston, points.position(n));
    const auto countOf = [&](double side) {
      return isAnyBehind ? 1 : std::max(std::ceil(side * wavelengths / mostSideOfPart), 1.0);
    };
    const double nx = countOf(piston.width), ny = countOf(piston.height);
    if (static_cast<double>(parts.size()) + nx * ny > static_cast<double>(most)) return {};
    const auto columns = static_cast<int>(nx), rows = static_cast<int>(ny);
    for (int i = 0; i < columns; ++i)
      for (int j = 0; j < rows; ++j) {
        Field::Piston part = piston;
        part.width = piston.width / nx;
        part.height = piston.height / ny;
        const double x = ((2 * i + 1) / nx - 1) * piston.width / 2,
                     y = ((2 * j + 1) / ny - 1) * piston.height / 2;
        for (std::size_t n = 0; n < 3; ++n)
          part.centre[n] += x * piston.axes[0][n] + y * piston.axes[1][n];
        parts.push_back(part);
      }
  }
  return parts;
}

}  // namespace pistonfield
