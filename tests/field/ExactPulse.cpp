#include "field/ExactPulse.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "field/Pistons.h"
#include "support/LegendreNode.h"

using namespace pistonfield;

namespace {

const double pi = std::acos(-1.0);

const std::vector<support::Node>& rule() {
  static const std::vector<support::Node> nodes = [] {
    std::vector<support::Node> result;
    const int n = 16;
    for (int i = 0; i < n; ++i)
      result.push_back(support::legendreNode(n, std::cos(pi * (i + 0.75) / (n + 0.5))));
    return result;
  }();
  return nodes;
}

/// The cubic B-spline and its derivative.
double bSpline(double x) {
  const auto cube = [](double y) { return y > 0 ? y * y * y : 0; };
  return (cube(x + 2) - 4 * cube(x + 1) + 6 * cube(x) - 4 * cube(x - 1) + cube(x - 2)) / 6;
}
double bSplineSlope(double x) {
  const auto square = [](double y) { return y > 0 ? y * y : 0; };
  return (square(x + 2) - 4 * square(x + 1) + 6 * square(x) - 4 * square(x - 1) + square(x - 2)) /
         2;
}

/// Coefficients of a spline through the samples by iteration, which converges by 2 to 1.
std::vector<double> splineThrough(const std::vector<double>& samples) {
  std::vector<double> c = samples;
  for (int step = 0; step < 60; ++step) {
    std::vector<double> next(c.size());
    for (std::size_t n = 0; n < c.size(); ++n)
      next[n] = (6 * samples[n] - (n > 0 ? c[n - 1] : 0) - (n + 1 < c.size() ? c[n + 1] : 0)) / 4;
    c = next;
  }
  return c;
}

/// The angle of the part of a circle around (x, y) that lies on the rectangle |ξ| < a, |η| < b.
double angleOn(double x, double y, double radius, double a, double b) {
  if (radius == 0) return std::fabs(x) < a && std::fabs(y) < b ? 2 * pi : 0;
  std::vector<double> ends = {0, 2 * pi};
  const auto cross = [&](double cosine, bool isAlongX) {
    if (!(std::fabs(cosine) < 1)) return;
    const double angle = std::acos(cosine);
    for (double end : {angle, -angle}) {
      if (!isAlongX) end = pi / 2 - end;  // sin instead of cos
      end = std::fmod(end + 4 * pi, 2 * pi);
      ends.push_back(end);
    }
  };
  for (const double sign : {-1.0, 1.0}) {
    cross((sign * a - x) / radius, true);
    cross((sign * b - y) / radius, false);
  }
  std::sort(ends.begin(), ends.end());
  double sum = 0;
  for (std::size_t n = 1; n < ends.size(); ++n) {
    const double middle = (ends[n] + ends[n - 1]) / 2;
    if (std::fabs(x + radius * std::cos(middle)) < a &&
        std::fabs(y + radius * std::sin(middle)) < b)
      sum += ends[n] - ends[n - 1];
  }
  return sum;
}

}  // namespace

ExactPulse::ExactPulse(std::vector<DelayedPiston> pistons, double speed,
                       const Excitation& excitation)
    : pistons_(std::move(pistons)),
      speed_(speed),
      excitation_(excitation),
      coefficients_(splineThrough(excitation.samples)) {}

double ExactPulse::velocity(double t) const {
  double sum = 0;
  const double x = (t - excitation_.start) * excitation_.rate;
  for (std::size_t n = 0; n < coefficients_.size(); ++n)
    if (std::fabs(x - static_cast<double>(n)) < 2)
      sum += coefficients_[n] * bSpline(x - static_cast<double>(n));
  return sum;
}

double ExactPulse::acceleration(double t) const {
  double sum = 0;
  const double x = (t - excitation_.start) * excitation_.rate;
  for (std::size_t n = 0; n < coefficients_.size(); ++n)
    if (std::fabs(x - static_cast<double>(n)) < 2)
      sum += coefficients_[n] * bSplineSlope(x - static_cast<double>(n));
  return sum * excitation_.rate;
}

double ExactPulse::pressureOf(const Field::Piston& piston, const Position& point, double t) const {
  const Position own = inPiston(piston, point);
  const double x = std::fabs(own[0]), y = std::fabs(own[1]), z = std::fabs(own[2]),
               a = piston.width / 2, b = piston.height / 2;
  const auto distance = [&](double u, double v) { return std::hypot(u, v, z); };
  // Where the arc begins, ends, touches an edge or passes a corner.
  std::vector<double> kinks = {z};
  for (const double u : {x - a, x + a}) {
    kinks.push_back(distance(u, 0));
    for (const double v : {y - b, y + b}) kinks.push_back(distance(u, v));
  }
  for (const double v : {y - b, y + b}) kinks.push_back(distance(0, v));
  std::sort(kinks.begin(), kinks.end());
  const double least = kinks.front(), most = kinks.back();
  // Where v' has a kink.
  const auto knots = static_cast<int>(coefficients_.size()) + 2;
  for (int n = -2; n < knots; ++n) {
    const double R = (t - excitation_.start - n / excitation_.rate) * speed_;
    if (R > least && R < most) kinks.push_back(R);
  }
  std::sort(kinks.begin(), kinks.end());
  double sum = 0;
  for (std::size_t n = 1; n < kinks.size(); ++n) {
    const double from = kinks[n - 1], length = kinks[n] - from;
    if (acceleration(t - (from + 0.3 * length) / speed_) == 0) continue;
    for (const auto& [node, weight] : rule()) {
      const double s = static_cast<double>(1 + node) / 2;
      const double R = from + length * s * s * (3 - 2 * s);
      const double radius = std::sqrt(std::max((R - z) * (R + z), 0.0));
      sum += static_cast<double>(weight) / 2 * length * 6 * s * (1 - s) *
             acceleration(t - R / speed_) * angleOn(x, y, radius, a, b);
    }
  }
  double p = sum / (2 * pi * speed_);
  const auto covered = [](double u, double half) { return u < half ? 1 : u == half ? 0.5 : 0; };
  if (own[2] < 0)
    p += covered(x, a) * covered(y, b) * (velocity(t + z / speed_) - velocity(t - z / speed_));
  return p;
}

double ExactPulse::at(const Position& point, double t) const {
  double sum = 0;
  for (const DelayedPiston& delayed : pistons_)
    sum += delayed.piston.weight.real() * pressureOf(delayed.piston, point, t - delayed.delay);
  return sum;
}
