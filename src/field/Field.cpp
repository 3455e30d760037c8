#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <limits>
#include <new>
#include <string>
#include <utility>

#include "field/EqualPistons.h"
#include "field/Evaluation.h"
#include "field/Mirror.h"
#include "field/RowEvaluation.h"
#include "field/SortedPoints.h"
#include "field/Vectors.h"

namespace pistonfield {
namespace {

bool finite(const Position& p) {
  return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

bool isRotation(const std::array<Position, 3>& axes) {
  if (!finite(axes[0]) || !finite(axes[1]) || !finite(axes[2])) return false;
  const auto [x, y, z] = axes;
  const Position cross = {x[1] * y[2] - x[2] * y[1], x[2] * y[0] - x[0] * y[2],
                          x[0] * y[1] - x[1] * y[0]};
  const auto isNear = [](double value, double wanted) { return std::fabs(value - wanted) < 3e-6; };
  return isNear(dot(x, x), 1) && isNear(dot(y, y), 1) && isNear(dot(x, y), 0) &&
         isNear(dot(z, z), 1) && isNear(dot(cross, z), 1);
}

/// The rotation next to axes that are one within their rounding.
std::array<Position, 3> orthonormal(const std::array<Position, 3>& axes) {
  auto [x, y, z] = axes;
  const double length = std::sqrt(dot(x, x));
  for (double& component : x) component /= length;
  const double along = dot(x, y);
  for (std::size_t n = 0; n < 3; ++n) y[n] -= along * x[n];
  const double rest = std::sqrt(dot(y, y));
  for (double& component : y) component /= rest;
  return {x, y, {x[1] * y[2] - x[2] * y[1], x[2] * y[0] - x[0] * y[2], x[0] * y[1] - x[1] * y[0]}};
}

void check(const Field::Piston& piston, std::size_t index) {
  const std::string name = "Piston " + std::to_string(index);
  if (!(std::isfinite(piston.width) && std::isfinite(piston.height) && piston.width >= 0 &&
        piston.height >= 0))
    throw FieldError(name + ": width and height must be finite and at least 0.");
  if (!finite(piston.centre)) throw FieldError(name + ": its centre must be finite.");
  if (!isRotation(piston.axes))
    throw FieldError(name + ": its axes must be unit vectors at right angles, right-handed.");
  if (!std::isfinite(piston.weight.real()) || !std::isfinite(piston.weight.imag()))
    throw FieldError(name + ": its weight must be finite.");
}

/// Shorter sides cannot be told from 0; longer ones take too long.
constexpr double leastSide = 1e-9, mostSide = 1e6;  // in wavelengths

void checkScale(const Field::Piston& piston, double wavelengths, std::size_t index) {
  const std::string name = "Piston " + std::to_string(index);
  for (const double side : {piston.width * wavelengths, piston.height * wavelengths})
    if (side != 0 && !(side >= leastSide && side <= mostSide))
      throw FieldError(name +
                       ": its sides must be 0 or from 1e-9 to 1e6 wavelengths. Give lengths and "
                       "1/k in one unit.");
  for (const double coordinate : piston.centre)
    if (!(std::fabs(coordinate) * wavelengths <= mostWavelengths))
      throw FieldError(name +
                       ": its centre is farther than 1e9 wavelengths from the origin. Give lengths "
                       "and 1/k in one unit.");
}

void check(const FieldOptions& options) {
  if (options.order < 0 || options.order > 512)
    throw FieldError("The order must be from 1 to 512, or 0 for a tolerance.");
  if (options.order == 0 && !(options.tolerance >= 1e-12 && options.tolerance < 1))
    throw FieldError("The tolerance must be from 1e-12 to below 1.");
}

std::string inDigits(double tolerance) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%.1e", tolerance);
  return text.data();
}

/// Sorting a list takes about as long as eight pistons.
constexpr std::size_t leastPistonsToSort = 16, leastPointsToSort = 64;

/// The smallest peak pressure that is told from 0, relative to that at the pistons.
constexpr double leastPeak = 1e-30;

/// Up to 256 finite points, from the whole range.
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

/// A lower bound of the largest magnitude among the points, from some of them; or leastPeak times
/// what it can be at the pistons, if it is smaller.
double peakOf(const std::vector<Field::Piston>& pistons, double k, const Points& points,
              const std::function<void(double)>& progress) {
  const std::vector<Position> some = somePoints(points);
  if (some.empty()) return 1;  // the pressures are NaN
  double bound = 0;            // of a pressure in front of the pistons, about
  for (const Field::Piston& piston : pistons) bound += 2 * std::abs(piston.weight);
  std::vector<std::complex<double>> p(some.size());
  double tolerance = bound / 20;
  while (tolerance > bound * leastPeak) {
    Work work(
        [&](double) {
          if (progress) progress(0);
        },
        1);
    Evaluation(pistons, k, tolerance, Shift())
        .run(ListPoints(some.data(), some.size()), p.data(), work);
    double peak = 0;
    for (const std::complex<double>& value : p)
      if (std::abs(value) > peak) peak = std::abs(value);
    if (peak > 4 * tolerance) return peak - tolerance;
    tolerance /= 20;
  }
  return bound * leastPeak;
}

/// Whether there may be points of a grid behind a piston, where pressures are discontinuous.
bool isAnyBehind(const std::vector<Field::Piston>& pistons, const Points& points) {
  const std::vector<Position> corners = points.corners();
  return std::any_of(pistons.begin(), pistons.end(), [&](const Field::Piston& piston) {
    return std::any_of(corners.begin(), corners.end(), [&](const Position& p) {
      return dot(piston.axes[2], difference(p, piston.centre)) < 0;
    });
  });
}

/// The largest magnitude of a coordinate of a grid's points and of pistons.
double largestCoordinate(const std::vector<Field::Piston>& pistons, const Points& points) {
  double largest = 0;
  const auto take = [&](const Position& p) {
    for (const double coordinate : p)
      if (std::fabs(coordinate) > largest) largest = std::fabs(coordinate);
  };
  for (const Position& corner : points.corners()) take(corner);
  for (const Field::Piston& piston : pistons) take(piston.centre);
  return largest;
}

/// Positions on a grid that differ by at most this are taken for the same: some units of the last
/// place, in which numbers such as 0.3·i differ that stand for the same. 0 where even that matters.
double negligibleLength(const std::vector<Field::Piston>& pistons, double k, const Points& points,
                        double tolerance) {
  const double length = 8 * 0x1p-53 * largestCoordinate(pistons, points);
  return length * std::fabs(k) < tolerance / 1000 ? length : 0;
}

/// Pistons that are evaluated row by row, and the others.
struct Divided {
  Rows rows{};
  std::vector<EqualPistons> inRows;
  std::vector<Field::Piston> rest;
};

/// Divides the pistons so that the evaluation takes the least time.
Divided divided(const std::vector<Field::Piston>& pistons, double k, double tolerance,
                const Points& points, double negligible,
                const std::function<void(double)>& progress) {
  Divided best{{}, {}, pistons};
  double mostSaved = 0;
  for (const Rows& rows : points.rows()) {
    if (rows.length < 8 || !(dot(rows.step, rows.step) > 0 && rows.deviation <= negligible))
      continue;
    if (progress) progress(0);
    Divided candidate{rows, {}, {}};
    double saved = 0;
    const std::vector<EqualPistons> groups = equalPistons(pistons, rows, negligible);
    const std::size_t rowsToTry = groups.size() < 100 ? 16 : 1;
    for (const EqualPistons& group : groups) {
      const double share =
          static_cast<double>(group.pistons.size()) / static_cast<double>(pistons.size());
      const RowEvaluation::Cost cost =

          RowEvaluation::cost(group, rows, points, k, share * tolerance, rowsToTry);
      if (cost.sampled < 0.8 * cost.oneByOne) {
        candidate.inRows.push_back(group);
        saved += cost.oneByOne - cost.sampled;
      } else {
        candidate.rest.insert(candidate.rest.end(), group.pistons.begin(), group.pistons.end());
      }
    }
    if (saved <= mostSaved) continue;
    mostSaved = saved;
    best = std::move(candidate);
  }
  return best;
}

/// Writes the pressures, which are zeros, for an absolute tolerance, or for an order.
Used evaluateFor(const std::vector<Field::Piston>& pistons, double k, double tolerance,
                 const Points& points, const FieldOptions& options,
                 std::complex<double>* pressures) {
  const double negligible = negligibleLength(pistons, k, points, options.tolerance);
  Divided parts{{}, {}, pistons};
  if (options.order == 0 && k != 0 && !isAnyBehind(pistons, points))
    parts = divided(pistons, k, tolerance, points, negligible, options.progress);
  const bool someInRows = !parts.inRows.empty(), someElse = !someInRows || !parts.rest.empty();
  Work work(options.progress,
            static_cast<double>(points.count()) * (someInRows && someElse ? 2 : 1));
  work.advance(0);
  const Shift shift{points.shift(), points.relativeShift()};
  const double share = static_cast<double>(parts.rest.size()) / static_cast<double>(pistons.size());
  Evaluation rest(parts.rest, k, tolerance * share, shift, options.order);
  if (someElse) rest.run(points, pressures, work);
  if (!someInRows) return rest.used();
  RowEvaluation inRows(parts.inRows, parts.rows, points, k, tolerance * (1 - share),
                       {shift.absolute + negligible, shift.relative});
  inRows.run(pressures, work);
  return bothUsed(rest.used(), inRows.used());
}

bool isSilent(const Field::Piston& piston) {
  return piston.weight == 0.0 || piston.width == 0 || piston.height == 0;
}

[[noreturn]] void refuse(double tolerance, const Used& used) {
  if (std::isinf(used.excess))
    throw FieldError(
        "A point is farther than 1e9 wavelengths from the origin. Give lengths and 1/k in one "
        "unit.");
  // Rounded up, so that it is accepted.
  const double kept = 1.1 * tolerance * used.excess;
  if (kept < 0.5)
    throw FieldError(
        "Double precision cannot keep the tolerance at these points. Ask for at least " +
        inDigits(kept) + ", or for points nearer to the pistons.");
  throw FieldError(
      "Double precision cannot keep any tolerance at these points: the pressures are too small, "
      "for pistons that cancel each other or points that are too far. Add points with larger "
      "pressures.");
}

std::vector<std::complex<double>> evaluate(std::vector<Field::Piston> pistons, double k,
                                           const Points& points, const FieldOptions& options,
                                           FieldReport* report) {
  check(options);
  if (report) *report = {};
  std::vector<std::complex<double>> pressures(points.count());
  if (pressures.empty() || pistons.empty()) return pressures;
  double scale = 0;  // so that the sum of weights does not overflow
  for (const Field::Piston& piston : pistons)
    scale = std::max({scale, std::fabs(piston.weight.real()), std::fabs(piston.weight.imag())});
  for (Field::Piston& piston : pistons)
    if (scale > 0) piston.weight = {piston.weight.real() / scale, piston.weight.imag() / scale};
  pistons.erase(std::remove_if(pistons.begin(), pistons.end(), isSilent), pistons.end());
  double peak = options.order > 0 ? 0 : peakOf(pistons, k, points, options.progress);
  Used used = evaluateFor(pistons, k, options.tolerance * peak, points, options, pressures.data());
  if (used.excess > 1 && !std::isinf(used.excess)) {
    // The few points of which the peak was estimated may have missed it.
    double largest = 0;
    for (const std::complex<double>& p : pressures)
      if (std::abs(p) > largest) largest = std::abs(p);
    largest -= options.tolerance * peak * used.excess;
    if (largest > 1.5 * peak) {
      peak = largest;
      std::fill(pressures.begin(), pressures.end(), 0.0);
      used = evaluateFor(pistons, k, options.tolerance * peak, points, options, pressures.data());
    }
  }
  if (used.excess > 1) refuse(options.tolerance, used);
  if (scale != 1)
    for (std::complex<double>& p : pressures) p *= scale;
  if (report)
    *report = {used.mostOrder > 0 ? used.leastOrder : 0,
               used.mostOrder,
               used.single,
               used.precise,
               static_cast<double>(used.nodes),
               options.order > 0 ? std::numeric_limits<double>::quiet_NaN()
                                 : options.tolerance * peak * scale};
  return pressures;
}

/// Returns what compute(options) returns. Too little memory becomes a FieldError, but an exception
/// of the caller's own function passes through.
template <class Compute>
std::vector<std::complex<double>> computed(const FieldOptions& options, const Compute& compute) {
  struct Stopped {};
  std::exception_ptr callers;
  FieldOptions guarded = options;
  if (options.progress)
    guarded.progress = [&](double fraction) {
      try {
        options.progress(fraction);
      } catch (...) {
        callers = std::current_exception();
        throw Stopped();
      }
    };
  try {
    return compute(guarded);
  } catch (const Stopped&) {
    std::rethrow_exception(callers);
  } catch (const std::bad_alloc&) {
    throw FieldError("Not enough memory for the pressures. Compute fewer points at once.");
  } catch (const std::length_error&) {
    throw FieldError("Not enough memory for the pressures. Compute fewer points at once.");
  }
}

}  // namespace

Field::Field(std::vector<Field::Piston> pistons, double k) : pistons_(std::move(pistons)), k_(k) {
  if (!std::isfinite(k)) throw FieldError("k must be a finite real number.");
  for (std::size_t n = 0; n < pistons_.size(); ++n) {
    check(pistons_[n], n);
    pistons_[n].axes = orthonormal(pistons_[n].axes);
    if (k != 0) checkScale(pistons_[n], wavelengthsPerUnit(k), n);
  }
}

std::vector<std::complex<double>> Field::at(const std::vector<Position>& points,
                                            const FieldOptions& options,
                                            FieldReport* report) const {
  return at(points.data(), points.size(), options, report);
}

std::vector<std::complex<double>> Field::at(const Position* points, std::size_t count,
                                            const FieldOptions& options,
                                            FieldReport* report) const {
  return computed(options, [&](const FieldOptions& guarded) {
    if (pistons_.size() < leastPistonsToSort || count < leastPointsToSort)
      return evaluate(pistons_, k_, ListPoints(points, count), guarded, report);
    const SortedPoints sorted(points, count, guarded.progress);
    return sorted.inListOrder(evaluate(pistons_, k_, sorted, guarded, report));
  });
}

std::vector<std::complex<double>> Field::on(const AxesGrid& grid, const FieldOptions& options,
                                            FieldReport* report) const {
  return computed(options, [&](const FieldOptions& guarded) {
    const AxesPoints points(grid);
    check(options);
    // Mirror images are exact where pressures are discontinuous.
    const double negligible = isAnyBehind(pistons_, points)
                                  ? 0
                                  : negligibleLength(pistons_, k_, points, options.tolerance);
    const bool mirrorsX = isMirrored(pistons_, grid, 0, negligible),
               mirrorsY = isMirrored(pistons_, grid, 1, negligible);
    if (!mirrorsX && !mirrorsY) return evaluate(pistons_, k_, points, guarded, report);
    const AxesGrid part{mirrorsX ? firstHalf(grid.x) : grid.x,
                        mirrorsY ? firstHalf(grid.y) : grid.y, grid.z};
    const AxesPoints half(part, negligible);
    return withMirrorImages(evaluate(pistons_, k_, half, guarded, report), grid, mirrorsX,
                            mirrorsY);
  });
}

std::vector<std::complex<double>> Field::on(const AffineGrid& grid, const FieldOptions& options,
                                            FieldReport* report) const {
  for (const Position& vector : {grid.origin, grid.steps[0], grid.steps[1], grid.steps[2]})
    if (!finite(vector)) throw FieldError("The origin and the steps of the grid must be finite.");
  const auto isAlong = [&](std::size_t axis) {
    const Position& step = grid.steps[axis];
    return step[(axis + 1) % 3] == 0 && step[(axis + 2) % 3] == 0;
  };
  if (!isAlong(0) || !isAlong(1) || !isAlong(2))
    return computed(options, [&](const FieldOptions& guarded) {
      return evaluate(pistons_, k_, AffinePoints(grid), guarded, report);
    });
  AxesGrid axes;
  computed(options, [&](const FieldOptions&) {
    const AffinePoints points(grid);  // refuses a grid that is too large
    for (std::size_t axis = 0; axis < 3; ++axis)
      for (std::size_t n = 0; n < grid.counts[axis] && points.count() > 0; ++n)
        (axis == 0   ? axes.x
         : axis == 1 ? axes.y
                     : axes.z)
            .push_back(grid.origin[axis] + static_cast<double>(n) * grid.steps[axis][axis]);
    return std::vector<std::complex<double>>();
  });
  return on(axes, options, report);
}

}  // namespace pistonfield
