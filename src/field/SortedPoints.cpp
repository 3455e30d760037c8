#include "field/SortedPoints.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace pistonfield {
namespace {

/// The lowest 21 bits, with two zeros after each.
std::uint64_t spread(std::uint64_t bits) {
  bits = (bits | bits << 32) & 0x001F00000000FFFF;
  bits = (bits | bits << 16) & 0x001F0000FF0000FF;
  bits = (bits | bits << 8) & 0x100F00F00F00F00F;
  bits = (bits | bits << 4) & 0x10C30C30C30C30C3;
  return (bits | bits << 2) & 0x1249249249249249;
}

struct Box {
  Position least;
  double size = 0;  ///< of the longest side

  Box(const Position* points, std::size_t count) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    Position most = {-infinity, -infinity, -infinity};
    least = {infinity, infinity, infinity};
    for (std::size_t n = 0; n < count; ++n)
      for (std::size_t axis = 0; axis < 3; ++axis) {
        const double coordinate = points[n][axis];
        if (!std::isfinite(coordinate)) continue;
        least[axis] = std::min(least[axis], coordinate);
        most[axis] = std::max(most[axis], coordinate);
      }
    for (std::size_t axis = 0; axis < 3; ++axis) size = std::max(size, most[axis] - least[axis]);
  }

  /// Where the point lies on the curve; points that are not finite come last.
  std::uint64_t code(const Position& p) const {
    std::uint64_t bits = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double cell = (p[axis] - least[axis]) / size * 0x1FFFFF;
      if (!(cell >= 0 && cell <= 0x1FFFFF)) return std::numeric_limits<std::uint64_t>::max();
      bits |= spread(static_cast<std::uint64_t>(cell)) << axis;
    }
    return bits;
  }
};

}  // namespace

SortedPoints::SortedPoints(const Position* points, std::size_t count,
                           const std::function<void(double)>& progress)
    : Points(count), points_(points) {
  constexpr std::size_t blockSize = 1 << 19;
  const Box box(points, count);
  indices_.reserve(count);
  std::vector<std::pair<std::uint64_t, std::size_t>> order;
  for (std::size_t first = 0; first < count; first += blockSize) {
    if (progress) progress(0);
    order.clear();
    for (std::size_t n = first; n < std::min(first + blockSize, count); ++n)
      order.emplace_back(box.code(points[n]), n);
    std::sort(order.begin(), order.end());
    for (const auto& [code, n] : order) indices_.push_back(n);
  }
}

void SortedPoints::read(std::size_t first, std::size_t count, double* x, double* y,
                        double* z) const {
  for (std::size_t n = 0; n < count; ++n) {
    const Position& p = points_[indices_[first + n]];
    x[n] = p[0];
    y[n] = p[1];
    z[n] = p[2];
  }
}

std::vector<std::complex<double>> SortedPoints::inListOrder(
    const std::vector<std::complex<double>>& values) const {
  std::vector<std::complex<double>> listed(values.size());
  for (std::size_t n = 0; n < values.size(); ++n) listed[indices_[n]] = values[n];
  return listed;
}

}  // namespace pistonfield
