#include "field/beam.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace pistonfield {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// A position and the magnitude there.
struct Sample {
  double x, magnitude;
};

using Line = std::vector<Sample>;

/// The part of the peak that is left after a drop in decibels. The C library's pow of today needs a
/// newer library than the modules do.
double partAfter(double drop) {
  constexpr double nepersPerDecibel = 0.11512925464970228;  // ln 10 / 20
  return 1 / (1 + std::expm1(drop * nepersPerDecibel));
}

/// The peak of the parabola through a largest sample and its neighbours, if that is possible.
Sample peakNear(const Line& line, std::size_t top) {
  const Sample peak = line[top];
  if (top == 0 || top + 1 == line.size()) return peak;
  const Sample before = line[top - 1], after = line[top + 1];
  const double back = peak.x - before.x, ahead = after.x - peak.x;
  // In unequal steps a parabola can rise far above its samples.
  if (back > 2 * ahead || ahead > 2 * back) return peak;
  const double rise = (peak.magnitude - before.magnitude) / back,
               fall = (peak.magnitude - after.magnitude) / ahead;
  const double curvature = (rise + fall) / (back + ahead);
  if (!(curvature > 0)) return peak;
  const double slope = (rise * ahead - fall * back) / (back + ahead);
  const double offset = slope / (2 * curvature);
  return {peak.x + offset, peak.magnitude + slope * offset / 2};
}

/// Where the magnitude falls below a level on the way from the peak outwards.
template <class Iterator>
double edge(Sample inside, Iterator outwards, Iterator end, double level) {
  for (; outwards != end; ++outwards) {
    if (outwards->magnitude < level)
      return inside.x + (outwards->x - inside.x) *
                            ((inside.magnitude - level) / (inside.magnitude - outwards->magnitude));
    inside = *outwards;
  }
  return nan;
}

Beam beamOf(const Line& line, double part) {
  const auto isFinite = [](const Sample& sample) { return std::isfinite(sample.magnitude); };
  if (!std::all_of(line.begin(), line.end(), isFinite)) return {nan, nan, nan, nan, nan};
  const auto top = std::max_element(
      line.begin(), line.end(),
      [](const Sample& one, const Sample& other) { return one.magnitude < other.magnitude; });
  const Sample peak = peakNear(line, static_cast<std::size_t>(top - line.begin()));
  const double level = part * peak.magnitude;
  // The first samples beyond the peak, which is between those beside the largest.
  const auto right = peak.x < top->x ? top : top + 1;
  const auto left = std::make_reverse_iterator(peak.x > top->x ? top + 1 : top);
  Beam beam;
  beam.peak = peak.magnitude;
  beam.position = peak.x;
  beam.left = edge(peak, left, line.rend(), level);
  beam.right = edge(peak, right, line.end(), level);
  beam.width = beam.right - beam.left;
  return beam;
}

void check(const std::vector<double>& x, double drop) {
  const auto isNoStep = [](double here, double next) { return !(here < next); };
  if (x.size() < 2 || !std::isfinite(x.front()) || !std::isfinite(x.back()) ||
      std::adjacent_find(x.begin(), x.end(), isNoStep) != x.end())
    throw FieldError("x must be two or more finite real numbers in increasing order.");
  if (!(drop > 0) || !std::isfinite(drop))
    throw FieldError("drop must be a positive number of decibels.");
}

}  // namespace

std::vector<Beam> beams(const std::vector<double>& x, const std::complex<double>* p,
                        std::size_t count, double drop) {
  check(x, drop);
  const double part = partAfter(drop);
  std::vector<Beam> result(count);
  Line line(x.size());
  for (Beam& beam : result) {
    for (std::size_t n = 0; n < x.size(); ++n) line[n] = {x[n], std::abs(p[n])};
    beam = beamOf(line, part);
    p += x.size();
  }
  return result;
}

Beam beam(const std::vector<double>& x, const std::vector<std::complex<double>>& p, double drop) {
  if (p.size() != x.size()) throw FieldError("p must be one number for each of x.");
  return beams(x, p.data(), 1, drop)[0];
}

}  // namespace pistonfield
