#include "field/Points.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "field/Vectors.h"

namespace pistonfield {
namespace {

std::size_t product(std::size_t nx, std::size_t ny, std::size_t nz) {
  const std::size_t most =
      std::numeric_limits<std::ptrdiff_t>::max() / sizeof(std::complex<double>);
  if (nx == 0 || ny == 0 || nz == 0) return 0;
  if (ny > most / nx || nz > most / (nx * ny))
    throw FieldError("The grid has more points than an array can hold. Divide it.");
  return nx * ny * nz;
}

/// The least and the largest finite value; 0 if there is none.
std::array<double, 2> finiteRange(const std::vector<double>& values) {
  std::array<double, 2> range{};
  bool isFirst = true;
  for (const double value : values) {
    if (!std::isfinite(value)) continue;
    range = {isFirst ? value : std::min(range[0], value),
             isFirst ? value : std::max(range[1], value)};
    isFirst = false;
  }
  return range;
}

/// Calls at(n, i, j, m) for `count` points from `first` on; n counts them, and i runs fastest.
template <class At>
void walk(std::size_t first, std::size_t count, std::size_t nx, std::size_t ny, At at) {
  std::size_t i = first % nx, j = first / nx % ny, m = first / nx / ny;
  for (std::size_t n = 0; n < count; ++n) {
    at(n, i, j, m);
    if (++i < nx) continue;
    i = 0;
    if (++j < ny) continue;
    j = 0;
    ++m;
  }
}

}  // namespace

void ListPoints::read(std::size_t first, std::size_t count, double* x, double* y, double* z) const {
  for (std::size_t n = 0; n < count; ++n) {
    x[n] = points_[first + n][0];
    y[n] = points_[first + n][1];
    z[n] = points_[first + n][2];
  }
}

AxesPoints::AxesPoints(const AxesGrid& grid, double shift)
    : Points(product(grid.x.size(), grid.y.size(), grid.z.size())), grid_(grid), shift_(shift) {}

std::vector<Position> AxesPoints::corners() const {
  std::vector<Position> corners;
  if (count() == 0) return corners;
  const std::array<double, 2> xs = finiteRange(grid_.x), ys = finiteRange(grid_.y),
                              zs = finiteRange(grid_.z);
  for (const double x : xs)
    for (const double y : ys)
      for (const double z : zs) corners.push_back({x, y, z});
  return corners;
}

std::vector<Rows> AxesPoints::rows() const {
  std::vector<Rows> rows;
  if (count() == 0) return rows;
  std::size_t stride = 1;
  for (const std::vector<double>* axis : {&grid_.x, &grid_.y, &grid_.z}) {
    const std::size_t length = axis->size();
    const double last = static_cast<double>(std::max<std::size_t>(length - 1, 1));
    const double step = (axis->back() - axis->front()) / last;
    double deviation = 0;
    for (std::size_t i = 0; i < length; ++i)
      // Written so that it becomes infinite for values that are not finite.
      if (const double apart =
              std::fabs((*axis)[i] - (axis->front() + static_cast<double>(i) * step));
          !(apart <= deviation))
        deviation = std::isfinite(apart) ? apart : std::numeric_limits<double>::infinity();
    Position along = {0, 0, 0};
    along[rows.size()] = step;
    rows.push_back({length, count() / length, stride, along, deviation});
    stride *= length;
  }
  return rows;
}

void AxesPoints::read(std::size_t first, std::size_t count, double* x, double* y, double* z) const {
  const std::size_t nx = grid_.x.size(), ny = grid_.y.size();
  std::size_t i = first % nx, j = first / nx % ny, m = first / nx / ny;
  for (std::size_t n = 0; n < count; i = 0) {
    const std::size_t row = std::min(nx - i, count - n);
    std::copy_n(&grid_.x[i], row, x + n);
    std::fill_n(y + n, row, grid_.y[j]);
    std::fill_n(z + n, row, grid_.z[m]);
    n += row;
    if (++j < ny) continue;
    j = 0;
    ++m;
  }
}

AffinePoints::AffinePoints(const AffineGrid& grid)
    : Points(product(grid.counts[0], grid.counts[1], grid.counts[2])), grid_(grid) {}

std::vector<Position> AffinePoints::corners() const {
  std::vector<Position> corners;
  const auto [nx, ny, nz] = grid_.counts;
  for (std::size_t corner = 0; count() > 0 && corner < 8; ++corner) {
    const std::size_t i = corner & 1 ? nx - 1 : 0, j = corner & 2 ? ny - 1 : 0,
                      m = corner & 4 ? nz - 1 : 0;
    corners.push_back(position(i + nx * (j + ny * m)));
  }
  return corners;
}

double AffinePoints::shift() const {
  constexpr double units = 0x1p-52;  // of three products and three sums
  Position most{};                   // of the terms' magnitudes
  for (std::size_t component = 0; component < 3; ++component) {
    most[component] = std::fabs(grid_.origin[component]);
    for (std::size_t axis = 0; axis < 3; ++axis)
      if (grid_.counts[axis] > 1)
        most[component] +=
            static_cast<double>(grid_.counts[axis] - 1) * std::fabs(grid_.steps[axis][component]);
  }
  return units * std::sqrt(dot(most, most));
}

std::vector<Rows> AffinePoints::rows() const {
  std::vector<Rows> rows;
  std::size_t stride = 1;
  for (std::size_t axis = 0; count() > 0 && axis < 3; ++axis) {
    const std::size_t length = grid_.counts[axis];
    rows.push_back({length, count() / length, stride, grid_.steps[axis], 0});
    stride *= length;
  }
  return rows;
}

void AffinePoints::read(std::size_t first, std::size_t count, double* x, double* y,
                        double* z) const {
  walk(first, count, grid_.counts[0], grid_.counts[1], [&](auto n, auto i, auto j, auto m) {
    const auto along = [&](std::size_t axis) {
      return grid_.origin[axis] + static_cast<double>(i) * grid_.steps[0][axis] +
             static_cast<double>(j) * grid_.steps[1][axis] +
             static_cast<double>(m) * grid_.steps[2][axis];
    };
    x[n] = along(0);
    y[n] = along(1);
    z[n] = along(2);
  });
}

std::vector<Position> somePoints(const Points& points) {
  constexpr std::size_t most = 256;
  const std::size_t count = std::min(points.count(), most);
  std::vector<Position> some;
  for (std::size_t n = 0; n < count; ++n) {
    // Not on a grid's period.
    const std::size_t from = points.count() / count * n, to = from + points.count() / count;
    const Position p = points.position(from + (n * 0x9E3779B1u) % (to - from));
    if (finite(p)) some.push_back(p);
  }
  for (std::size_t n = 0; some.empty() && n < points.count(); ++n)
    if (const Position p = points.position(n); finite(p)) some.push_back(p);
  return some;
}

}  // namespace pistonfield
