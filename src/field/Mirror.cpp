#include "field/Mirror.h"

#include <algorithm>
#include <cmath>

#include "field/Vectors.h"
#include "parallel/Spread.h"

namespace pistonfield {
namespace {

/// Above this, looking for mirror images of pistons takes too long.
constexpr std::size_t mostPistons = 4096;

bool isSymmetric(const std::vector<double>& axis, double negligible) {
  const std::size_t n = axis.size();
  if (n < 2) return false;
  const double sum = axis.front() + axis.back();
  for (std::size_t i = 0; 2 * i < n; ++i)
    if (!(std::fabs(axis[i] + axis[n - 1 - i] - sum) <= negligible)) return false;
  return true;
}

double distance(const Position& p, const Position& q) {
  const Position apart = difference(p, q);
  return std::sqrt(dot(apart, apart));
}

/// Whether vectors are equal, or opposite, up to an angle by which a side of this length would move
/// its end less than `negligible`.
bool isSameLine(const Position& p, const Position& q, double side, double negligible) {
  const Position opposite = {-q[0], -q[1], -q[2]};
  return std::min(distance(p, q), distance(p, opposite)) * side <= negligible;
}

/// Whether q is the mirror image of p.
bool areMirrored(const Field::Piston& p, const Field::Piston& q, std::size_t axis, double sum,
                 double negligible) {
  if (p.width != q.width || p.height != q.height || p.weight != q.weight) return false;
  Position centre = p.centre;
  centre[axis] = sum - centre[axis];
  if (!(distance(centre, q.centre) <= negligible)) return false;
  std::array<Position, 3> axes = p.axes;
  for (Position& direction : axes) direction[axis] = -direction[axis];
  const double side = std::max(p.width, p.height);
  return isSameLine(axes[0], q.axes[0], side, negligible) &&
         isSameLine(axes[1], q.axes[1], side, negligible) && dot(axes[2], q.axes[2]) > 0;
}

}  // namespace

bool isMirrored(const std::vector<Field::Piston>& pistons, const AxesGrid& grid, int axis,
                double negligible) {
  const std::vector<double>& values = axis == 0 ? grid.x : grid.y;
  if (pistons.size() > mostPistons || !isSymmetric(values, negligible)) return false;
  const double sum = values.front() + values.back();
  std::vector<bool> isTaken(pistons.size());
  return std::all_of(pistons.begin(), pistons.end(), [&](const Field::Piston& piston) {
    for (std::size_t n = 0; n < pistons.size(); ++n) {
      // Arrays are usually listed from one end to the other.
      const std::size_t at =
          pistons.size() - 1 -
          (n + static_cast<std::size_t>(&piston - pistons.data())) % pistons.size();
      if (isTaken[at] ||
          !areMirrored(piston, pistons[at], static_cast<std::size_t>(axis), sum, negligible))
        continue;
      isTaken[at] = true;
      return true;
    }
    return false;
  });
}

std::vector<double> firstHalf(const std::vector<double>& axis) {
  return {axis.begin(), axis.begin() + static_cast<std::ptrdiff_t>((axis.size() + 1) / 2)};
}

std::vector<std::complex<double>> withMirrorImages(const std::vector<std::complex<double>>& part,
                                                   const AxesGrid& grid, bool mirrorsX,
                                                   bool mirrorsY) {
  const std::size_t nx = grid.x.size(), ny = grid.y.size();
  const std::size_t partX = mirrorsX ? (nx + 1) / 2 : nx, partY = mirrorsY ? (ny + 1) / 2 : ny;
  std::vector<std::complex<double>> all(nx * ny * grid.z.size());
  parallel::spread(ny * grid.z.size(), 16, [&](std::uint64_t first, std::uint64_t last) {
    for (std::uint64_t row = first; row < last; ++row) {
      const std::size_t j = row % ny, m = row / ny;
      const auto* const from = &part[(m * partY + (j < partY ? j : ny - 1 - j)) * partX];
      auto* const to = &all[row * nx];
      std::copy_n(from, partX, to);
      std::reverse_copy(from, from + (nx - partX), to + partX);
    }
  });
  return all;
}

}  // namespace pistonfield
