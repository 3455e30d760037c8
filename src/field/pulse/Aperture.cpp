#include "field/pulse/Aperture.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "field/Checks.h"
#include "field/Vectors.h"

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846, infinity = std::numeric_limits<double>::infinity();

/// An upper bound of the magnitude of the pressure.
///
/// The pressure is K/2π ∫ exp(−iKR)·Θ(R) dR, for the angle Θ of the arc of points on the piston
/// that are at the distance R; so its magnitude is at most the variation of Θ over 2π. From where
/// the piston is not covered by the point's projection, Θ rises and falls to 0, once to the left
/// and once to the right, by the angle at which the piston is seen at most.
double mostPressure(double width, double height, double beside) {
  if (!(beside > 0)) return 2;
  return std::min(hypotenuse(width, height) / (2 * beside), 1.0);
}

Reach reachOf(const DelayedPiston& one, const Position& p, double speed) {
  const Field::Piston& piston = one.piston;
  const Position from = difference(p, piston.centre);
  const double x = std::fabs(dot(piston.axes[0], from)), y = std::fabs(dot(piston.axes[1], from)),
               z = dot(piston.axes[2], from), a = piston.width / 2, b = piston.height / 2;
  const double nearest = std::hypot(std::max(x - a, 0.0), std::max(y - b, 0.0), z),
               farthest = std::hypot(x + a, y + b, z);
  // Straight behind a piston its plane wave continues, which is there before it starts. Rounding
  // may put a point beside an edge there.
  const bool isBehind = z < 0 && x <= 1.000001 * a && y <= 1.000001 * b;
  // Next to the piston, that of a disc with its area.
  const double area = piston.width * piston.height,
               gain = std::min(area / (2 * pi * nearest), std::sqrt(area / pi));
  const double weight = std::abs(piston.weight),
               limit = mostPressure(piston.width, piston.height,
                                    hypotenuse(std::max(x - a, 0.0), std::max(y - b, 0.0)));
  return {one.delay + (isBehind ? z : nearest) / speed,
          one.delay + farthest / speed,
          nearest,
          farthest,
          weight * (isBehind ? 4 : limit),
          isBehind ? infinity : weight * gain};
}

}  // namespace

Reach oneAfterTheOther(const Reach& one, const Reach& other) {
  return {one.first + other.first,       one.last + other.last,   one.nearest + other.nearest,
          one.farthest + other.farthest, one.limit * other.limit, one.gain * other.gain};
}

Aperture::Aperture(const std::vector<DelayedPiston>& pistons) {
  leastSide_ = infinity;
  double largest = 0;
  for (const DelayedPiston& one : pistons) {
    const Field::Piston& piston = one.piston;
    if (isSilent(piston)) continue;
    pistons_.push_back(one);
    pistons_.back().piston.axes = orthonormal(piston.axes);
    largest = std::max(largest, std::abs(piston.weight));
    leastSide_ = std::min({leastSide_, piston.width, piston.height});
    mostSide_ = std::max({mostSide_, piston.width, piston.height});
    for (const double coordinate : piston.centre)
      mostCoordinate_ = std::max(mostCoordinate_, std::fabs(coordinate));
  }
  exponent_ = largest > 0 ? std::ilogb(largest) : 0;
  for (DelayedPiston& one : pistons_) {
    one.piston.weight = {std::ldexp(one.piston.weight.real(), -exponent_),
                         std::ldexp(one.piston.weight.imag(), -exponent_)};
    weight_ += std::abs(one.piston.weight);
  }
}

Reach Aperture::reach(const Position& p, double speed) const {
  Reach all{infinity, -infinity, infinity, 0, 0, 0};
  for (const DelayedPiston& one : pistons_) {
    const Reach reach = reachOf(one, p, speed);
    all.first = std::min(all.first, reach.first);
    all.last = std::max(all.last, reach.last);
    all.nearest = std::min(all.nearest, reach.nearest);
    all.farthest = std::max(all.farthest, reach.farthest);
    all.limit += reach.limit;
    all.gain += reach.gain;
  }
  return all;
}

double Aperture::mostDelay() const {
  double most = 0;
  for (const DelayedPiston& one : pistons_) most = std::max(most, std::fabs(one.delay));
  return most;
}

bool Aperture::accepts(std::complex<double> k, double mostCoordinate) const {
  return isWaveNumber(k) && isSide(leastSide_ * wavelengthsPerUnit(k)) &&
         isSide(mostSide_ * wavelengthsPerUnit(k)) &&
         std::max(mostCoordinate, mostCoordinate_) * wavelengthsPerUnit(k) <= mostWavelengths;
}

std::vector<Field::Piston> Aperture::at(double omega) const {
  std::vector<Field::Piston> pistons;
  pistons.reserve(pistons_.size());
  for (const DelayedPiston& one : pistons_) {
    pistons.push_back(one.piston);
    const double turn = omega * one.delay;
    pistons.back().weight *= std::complex<double>(std::cos(turn), -std::sin(turn));
  }
  return pistons;
}

}  // namespace pistonfield
