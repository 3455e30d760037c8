#include "field/Evaluation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <mutex>

#include "field/Checks.h"
#include "field/DeviceEvaluation.h"
#include "field/Vectors.h"
#include "parallel/Cores.h"
#include "parallel/Spread.h"

namespace pistonfield {
namespace {

/// Of the tolerance, what the rounding of coordinates may take.
constexpr double positionShare = 0.25;

constexpr std::size_t tileSize = 1024;
static_assert(tileSize % pointsMultiple == 0);

/// How many points times pistons a core evaluates at once, at most: some hundredths of a second.
constexpr std::size_t chunkWork = 1 << 17;

/// How many are evaluated between two calls of `progress`, at least.
constexpr std::size_t pieceWork = 1 << 17;

/// The rules that tolerances need, which are computed once.
template <class Real>
const GaussRules<Real>& rulesForTolerances() {
  static const GaussRules<Real> rules(1, mostIntervalOrder);
  return rules;
}

WeightedPiston weighted(const Field::Piston& piston, std::complex<double> k, double tolerance) {
  WeightedPiston result{};
  const double wavelengths = wavelengthsPerUnit(k);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    result.centre[axis] = piston.centre[axis];
    for (std::size_t n = 0; n < 3; ++n) result.axes[axis][n] = piston.axes[axis][n] * wavelengths;
  }
  result.halfWidth = piston.width / 2 * wavelengths;
  result.halfHeight = piston.height / 2 * wavelengths;
  result.weightRe = piston.weight.real();
  // Σ w·(−p̄) is −conj(Σ w̄·p), for −k, or in general for −k̄.
  result.weightIm = k.real() > 0 ? piston.weight.imag() : -piston.weight.imag();
  // Units of the last place: of the difference to the centre, of the axis in wavelengths and of the
  // product; and of two more products and two sums if the piston is turned.
  const auto isAlong = [&](std::size_t axis) { return std::fabs(piston.axes[axis][axis]) == 1; };
  result.isTurned = !isAlong(0) || !isAlong(1);
  result.relativeShift = result.isTurned ? 0x1p-50 : 0x1.8p-52;
  result.decay = wavelengths > 0 ? -k.imag() / wavelengths : 0;
  result.weightMagnitude = std::abs(piston.weight);
  result.tolerance = tolerance / std::abs(piston.weight);
  return result;
}

/// Whether the coordinates of a point are numbers of at most `most` in magnitude.
bool isWithin(double x, double y, double z, double most) {
  return (std::fabs(x) <= most) & (std::fabs(y) <= most) & (std::fabs(z) <= most);
}

struct Tile {
  alignas(64) double x[tileSize], y[tileSize], z[tileSize];

  Tile(const Points& points, std::size_t first, std::size_t count) {
    points.read(first, count, x, y, z);
  }

  bool areAllWithin(std::size_t count, double most) const {
    bool within = true;
    for (std::size_t n = 0; n < count; ++n) within &= isWithin(x[n], y[n], z[n], most);
    return within;
  }

  /// Marks the points that are not. Returns the index of a point that is not marked, or `count`.
  std::size_t markLost(std::size_t count, double most, bool* isLost) const {
    std::size_t valid = count;
    for (std::size_t n = 0; n < count; ++n) {
      isLost[n] = !isWithin(x[n], y[n], z[n], most);
      if (!isLost[n]) valid = n;
    }
    return valid;
  }
  void copy(std::size_t from, std::size_t to) {
    x[to] = x[from];
    y[to] = y[from];
    z[to] = z[from];
  }
};

/// The pressure at a point that is not finite or too far, which is noted.
std::complex<double> lostPressure(const Position& p, Used& used) {
  if (std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]))
    used.excess = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  return {nan, nan};
}

}  // namespace

Used nothingUsed() { return {std::numeric_limits<int>::max(), 0, 0, false, false, 0, 0}; }

Used bothUsed(const Used& one, const Used& other) {
  return {std::min(one.leastOrder, other.leastOrder),
          std::max(one.mostOrder, other.mostOrder),
          one.nodes + other.nodes,
          one.single || other.single,
          one.precise || other.precise,
          std::max(one.excess, other.excess),
          0};
}

Evaluation::Evaluation(const std::vector<Field::Piston>& pistons, std::complex<double> k,
                       double tolerance, double shift, int order)
    : tolerance_(tolerance),
      isNegative_(k.real() < 0),
      mostCoordinate_(
          std::min(mostWavelengths / wavelengthsPerUnit(k), std::numeric_limits<double>::max())),
      add_(addPiston(instructionSet())),
      used_(nothingUsed()) {
  if (order > 0) {
    rule_.emplace(order, order);
    preciseRule_.emplace(order, order);
  }
  if (k == 0.0) return;  // no pistons: pressure 0
  for (const Field::Piston& piston : pistons) {
    pistons_.push_back(
        weighted(piston, k, tolerance * (1 - positionShare) / static_cast<double>(pistons.size())));
    pistons_.back().order = order;
    pistons_.back().rules = rules().table();
    pistons_.back().preciseRules = preciseRules().table();
    pistons_.back().shift = shift * wavelengthsPerUnit(k);
  }
}

const GaussRules<float>& Evaluation::rules() const {
  return rule_ ? *rule_ : rulesForTolerances<float>();
}

const GaussRules<double>& Evaluation::preciseRules() const {
  return preciseRule_ ? *preciseRule_ : rulesForTolerances<double>();
}

void Evaluation::run(const Points& points, std::complex<double>* pressures, Work& work) {
  if (DeviceEvaluation::isFaster(points.count(), pistons_.size()))
    return runOnDevice(points, pressures, work);
  std::mutex usedMutex;
  const std::size_t all = points.count(), pistons = std::max<std::size_t>(pistons_.size(), 1);
  // A high order takes longer than tolerances do.
  const int order = pistons_.empty() ? 0 : pistons_.front().order;
  const std::size_t perPoint = pistons * (1 + static_cast<std::size_t>(order) / 64);
  const std::size_t chunk =
      std::clamp<std::size_t>(chunkWork / perPoint, 64, tileSize) / pointsMultiple * pointsMultiple;
  const std::size_t pieceSize =
      std::max<std::size_t>(pieceWork / perPoint / chunk, parallel::cores()) * chunk;
  for (std::size_t piece = 0; piece < all; piece += pieceSize) {
    const std::size_t inPiece = std::min(pieceSize, all - piece);
    parallel::spread((inPiece + chunk - 1) / chunk, 1, [&](std::uint64_t begin, std::uint64_t end) {
      Used used = nothingUsed();
      const std::size_t last = std::min<std::size_t>(end * chunk, inPiece);
      for (std::size_t first = begin * chunk; first < last; first += chunk)
        runHere(points, piece + first, std::min(chunk, last - first), pressures + piece + first,
                used);
      const std::lock_guard lock(usedMutex);
      used_ = bothUsed(used_, used);
    });
    work.advance(static_cast<double>(inPiece));
  }
}

void Evaluation::runOnDevice(const Points& points, std::complex<double>* pressures, Work& work) {
  DeviceEvaluation device(pistons_, rules(), preciseRules(), points.count());
  std::vector<bool> isLost(device.re().size());
  for (std::size_t first = 0; first < points.count(); first += isLost.size()) {
    const std::size_t count = std::min(isLost.size(), points.count() - first);
    points.read(first, count, device.x(), device.y(), device.z());
    for (std::size_t n = 0; n < count; ++n) {
      double &x = device.x()[n], &y = device.y()[n], &z = device.z()[n];
      isLost[n] = !isWithin(x, y, z, mostCoordinate_);
      if (isLost[n]) x = y = z = 0;
    }
    device.run(count,
               [&](double fraction) { work.advance(fraction * static_cast<double>(count)); });
    for (std::size_t n = 0; n < count; ++n) {
      std::complex<double>& pressure = pressures[first + n];
      if (isLost[n]) {
        pressure = lostPressure(points.position(first + n), used_);
        continue;
      }
      pressure = {isNegative_ ? -device.re()[n] : device.re()[n], device.im()[n]};
      const UsedAtPoint& used = device.used()[n];
      used_ = bothUsed(used_, {used.leastOrder, used.mostOrder, used.nodes, used.single != 0,
                               used.precise != 0, used.excess, 0});
      if (!std::isfinite(std::abs(pressure))) used_.excess = std::numeric_limits<double>::max();
      if (pistons_.front().order == 0)
        used_.excess = std::max(used_.excess, used.positionError / (positionShare * tolerance_));
    }
  }
}

void Evaluation::runHere(const Points& points, std::size_t first, std::size_t count,
                         std::complex<double>* pressures, Used& used) const {
  for (std::size_t n = 0; n < count; n += tileSize)
    evaluateTile(points, first + n, std::min(tileSize, count - n), pressures + n, used);
}

void Evaluation::evaluateTile(const Points& points, std::size_t first, std::size_t count,
                              std::complex<double>* pressures, Used& used) const {
  Tile tile(points, first, count);
  const std::size_t padded =
      (count + pointsMultiple - 1) / pointsMultiple * std::size_t{pointsMultiple};
  const bool areAllWithin = tile.areAllWithin(count, mostCoordinate_);
  std::array<bool, tileSize> isLost{};
  const std::size_t valid = areAllWithin ? 0 : tile.markLost(count, mostCoordinate_, isLost.data());
  // Lost points and the rest of the last pack repeat a valid point.
  for (std::size_t n = areAllWithin ? count : 0; n < padded && valid < count; ++n)
    if (n >= count || isLost[n]) tile.copy(valid, n);

  used.positionError = 0;
  alignas(64) double re[tileSize] = {}, im[tileSize] = {};
  for (const WeightedPiston& piston : pistons_)
    if (valid < count) add_(piston, tile.x, tile.y, tile.z, static_cast<int>(padded), re, im, used);

  if (!pistons_.empty() && pistons_.front().order == 0)
    used.excess = std::max(used.excess, used.positionError / (positionShare * tolerance_));

  double magnitudes = 0;
  for (std::size_t n = 0; n < count; ++n) {
    magnitudes += std::fabs(re[n]) + std::fabs(im[n]);
    pressures[n] = {isNegative_ ? -re[n] : re[n], im[n]};
  }
  if (!std::isfinite(magnitudes)) used.excess = std::numeric_limits<double>::max();
  for (std::size_t n = 0; n < count && !areAllWithin; ++n)
    if (isLost[n]) pressures[n] = lostPressure(points.position(first + n), used);
}

}  // namespace pistonfield
