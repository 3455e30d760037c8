#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "FastNearfield/intervals/Wave.h"
#include "field/Checks.h"
#include "field/EqualPistons.h"
#include "field/Evaluation.h"
#include "field/Guarded.h"
#include "field/Magnitudes.h"
#include "field/Mirror.h"
#include "field/Parts.h"
#include "field/RowEvaluation.h"
#include "field/SortedPoints.h"
#include "field/Vectors.h"

// CONTRIBUTING.md follows a field from here down to the sum over nodes.

namespace pistonfield {
namespace {

void check(const FieldOptions& options) {
  if (options.order < 0 || options.order > 512)
    throw FieldError("The order must be from 1 to 512, or 0 for a tolerance.");
  if (options.order == 0) checkTolerance(options.tolerance);
}

/// Sorting a list takes about as long as eight pistons.
constexpr std::size_t leastPistonsToSort = 16, leastPointsToSort = 64;

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

/// Some units of the last place of the positions on a grid and of pistons.
double roundingOfPositions(const std::vector<Field::Piston>& pistons, const Points& points) {
  return 8 * 0x1p-53 * largestCoordinate(pistons, points);
}

/// Positions on a grid that differ by at most this are taken for the same: by the rounding in which
/// numbers such as 0.3·i differ that stand for the same. 0 where even that matters.
double negligibleLength(const std::vector<Field::Piston>& pistons, std::complex<double> k,
                        const Points& points, double tolerance) {
  const double length = roundingOfPositions(pistons, points);
  double least = 1 / std::fabs(k.real());  // in which a field may change
  for (const Field::Piston& piston : pistons) {
    if (piston.width > 0) least = std::min(least, piston.width);
    if (piston.height > 0) least = std::min(least, piston.height);
  }
  return length < tolerance / 1000 * least ? length : 0;
}

/// Pistons that are evaluated row by row, and the others.
struct Divided {
  Rows rows{};
  std::vector<EqualPistons> inRows;
  std::vector<Field::Piston> rest;
};

/// Divides the pistons so that the evaluation takes the least time.
Divided divided(const std::vector<Field::Piston>& pistons, std::complex<double> k, double tolerance,
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
      if (cost.byRows < 0.8 * cost.oneByOne) {
        candidate.inRows.push_back(group);
        saved += cost.oneByOne - cost.byRows;
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

/// Writes the pressures for an absolute tolerance, or for an order.
Used evaluateOneByOne(const std::vector<Field::Piston>& pistons, std::complex<double> k,
                      double tolerance, const Points& points, double shift,
                      const FieldOptions& options, std::complex<double>* pressures) {
  Work work(options.progress, static_cast<double>(points.count()));
  work.advance(0);
  Evaluation evaluation(pistons, k, tolerance, shift, options.order);
  evaluation.run(points, pressures, work);
  return evaluation.used();
}

/// The same. `pressures` holds zeros at first. Samples rows if that is faster, and if the rounding
/// of the samples' positions, of which the points themselves may be free, hardly matters.
Used evaluateFor(const std::vector<Field::Piston>& pistons, std::complex<double> k,
                 double tolerance, const Points& points, double shift, const FieldOptions& options,
                 std::complex<double>* pressures) {
  const double rounding = roundingOfPositions(pistons, points);
  Divided parts{{}, {}, pistons};
  if (options.order == 0 && k != 0.0 && rounding * std::fabs(k.real()) < options.tolerance / 50 &&
      !isAnyBehind(pistons, points))
    parts = divided(pistons, k, tolerance, points,
                    negligibleLength(pistons, k, points, options.tolerance), options.progress);
  if (parts.inRows.empty())
    return evaluateOneByOne(pistons, k, tolerance, points, shift, options, pressures);
  const bool someElse = !parts.rest.empty();
  Work work(options.progress, static_cast<double>(points.count()) * (someElse ? 2 : 1));
  work.advance(0);
  const double share = static_cast<double>(parts.rest.size()) / static_cast<double>(pistons.size());
  Evaluation rest(parts.rest, k, tolerance * share, shift, options.order);
  if (someElse) rest.run(points, pressures, work);
  RowEvaluation inRows(parts.inRows, parts.rows, points, k, tolerance * (1 - share),
                       shift + rounding);
  inRows.run(pressures, work);
  const Used used = bothUsed(rest.used(), inRows.used());
  if (!(used.excess > 1) || std::isinf(used.excess)) return used;
  return evaluateOneByOne(pistons, k, tolerance, points, shift, options, pressures);
}

/// Throws a FieldError if a point lies so far behind a piston in a lossy medium that its wave,
/// which grows there, is beyond what floats hold.
void checkGrowth(const std::vector<Field::Piston>& pistons, std::complex<double> k,
                 const Points& points) {
  for (const Field::Piston& piston : pistons)
    for (std::size_t n = 0; n < points.count() && k.imag() != 0; ++n) {
      const Position p = points.position(n);
      const double z = dot(piston.axes[2], difference(p, piston.centre));
      if (isStraightBehind(piston, p) && k.imag() * z > 0.999 * mostGrowth)
        throw FieldError(
            "In a lossy medium waves grow behind a piston, and at some point by more than 60 "
            "nepers. Leave out points behind pistons.");
    }
}

std::vector<std::complex<double>> evaluate(std::vector<Field::Piston> pistons,
                                           std::complex<double> k, const Points& points,
                                           const FieldOptions& options, FieldReport* report) {
  check(options);
  if (report) *report = {};
  std::vector<std::complex<double>> pressures(points.count());
  if (pressures.empty() || pistons.empty()) return pressures;
  const int scale = takeScale(pistons);
  double peak = options.order > 0 ? 0 : peakOf(pistons, k, points, options.progress);
  Used used = evaluateFor(pistons, k, options.tolerance * peak, points, points.shift(), options,
                          pressures.data());
  if (used.excess > 1 && !std::isinf(used.excess)) {  // the tolerance is not kept
    // The few points of which the peak was estimated may have missed it.
    double largest = 0;
    for (const std::complex<double>& p : pressures)
      if (std::abs(p) > largest) largest = std::abs(p);
    largest -= options.tolerance * peak * used.excess;
    if (largest > 1.5 * peak) {
      peak = largest;
      std::fill(pressures.begin(), pressures.end(), 0.0);
      used = evaluateFor(pistons, k, options.tolerance * peak, points, points.shift(), options,
                         pressures.data());
    }
  }
  for (const double side : sidesOfParts) {
    if (!(used.excess > 1) || std::isinf(used.excess) || k.imag() == 0) break;
    const std::vector<Field::Piston> parts = inParts(pistons, k, points, side);
    if (parts.size() <= pistons.size()) continue;
    std::fill(pressures.begin(), pressures.end(), 0.0);
    used = evaluateFor(parts, k, options.tolerance * peak, points,
                       points.shift() + roundingOfParts(pistons), options, pressures.data());
  }
  if (used.excess > 1) {
    checkGrowth(pistons, k, points);
    refuse(options.tolerance, used);
  }
  if (scale != 0)
    for (std::complex<double>& p : pressures) p = scaled(p, scale);
  if (report)
    *report = {used.mostOrder > 0 ? used.leastOrder : 0,
               used.mostOrder,
               used.single,
               used.precise,
               static_cast<double>(used.nodes),
               options.order > 0 ? std::numeric_limits<double>::quiet_NaN()
                                 : std::ldexp(options.tolerance * peak, scale)};
  return pressures;
}

/// The pressures on a grid, whose points are within `shift` of where they should be.
std::vector<std::complex<double>> evaluateOnAxes(const std::vector<Field::Piston>& pistons,
                                                 std::complex<double> k, const AxesGrid& grid,
                                                 double shift, const FieldOptions& options,
                                                 FieldReport* report) {
  const AxesPoints points(grid, shift);
  check(options);
  // Behind a piston pressures are discontinuous: a point beside an edge is no image of one on it.
  const bool isSmooth = !isAnyBehind(pistons, points);
  const double negligible = negligibleLength(pistons, k, points, options.tolerance);
  const bool mirrorsX = isSmooth && isMirrored(pistons, grid, 0, negligible),
             mirrorsY = isSmooth && isMirrored(pistons, grid, 1, negligible);
  if (!mirrorsX && !mirrorsY) return evaluate(pistons, k, points, options, report);
  const AxesGrid part{mirrorsX ? firstHalf(grid.x) : grid.x, mirrorsY ? firstHalf(grid.y) : grid.y,
                      grid.z};
  // A copied pressure is that of a point within `negligible` of its image.
  // negligible: how far a copied point may be from its image
  const AxesPoints evaluated(part, shift + negligible);
  return withMirrorImages(evaluate(pistons, k, evaluated, options, report), grid, mirrorsX,
                          mirrorsY);
}

/// Whether each step of the grid is along the axis of its own.
bool isAlongAxes(const AffineGrid& grid) {
  for (std::size_t axis = 0; axis < 3; ++axis)
    if (grid.steps[axis][(axis + 1) % 3] != 0 || grid.steps[axis][(axis + 2) % 3] != 0)
      return false;
  return true;
}

/// The coordinates along an axis of such a grid. Adds the largest rounding error to `rounding`.
std::vector<double> axisOf(const AffineGrid& grid, std::size_t axis, double& rounding) {
  const double origin = grid.origin[axis], step = grid.steps[axis][axis];
  std::vector<double> values(grid.counts[axis]);
  double largest = 0;
  for (std::size_t n = 0; n < values.size(); ++n) {
    const double index = static_cast<double>(n), product = index * step;
    values[n] = origin + product;
    // What the product and the sum leave out, exactly.
    const double added = values[n] - origin;
    const double rest =
        std::fma(index, step, -product) + ((origin - (values[n] - added)) + (product - added));
    if (std::fabs(rest) > largest) largest = std::fabs(rest);
  }
  rounding += largest;
  return values;
}

}  // namespace

Field::Field(std::vector<Field::Piston> pistons, std::complex<double> k)
    : pistons_(std::move(pistons)), k_(k) {
  checkWaveNumber(k);
  for (std::size_t n = 0; n < pistons_.size(); ++n) {
    check(pistons_[n], n);
    pistons_[n].axes = orthonormal(pistons_[n].axes);
    if (k.real() != 0) checkScale(pistons_[n], wavelengthsPerUnit(k), n);
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
  return guarded(options, [&](const FieldOptions& watched) {
    if (pistons_.size() < leastPistonsToSort || count < leastPointsToSort)
      return evaluate(pistons_, k_, ListPoints(points, count), watched, report);
    const SortedPoints sorted(points, count, watched.progress);
    return sorted.inListOrder(evaluate(pistons_, k_, sorted, watched, report));
  });
}

std::vector<std::complex<double>> Field::on(const AxesGrid& grid, const FieldOptions& options,
                                            FieldReport* report) const {
  return guarded(options, [&](const FieldOptions& watched) {
    return evaluateOnAxes(pistons_, k_, grid, 0, watched, report);
  });
}

std::vector<std::complex<double>> Field::on(const AffineGrid& grid, const FieldOptions& options,
                                            FieldReport* report) const {
  for (const Position& vector : {grid.origin, grid.steps[0], grid.steps[1], grid.steps[2]})
    if (!finite(vector)) throw FieldError("The origin and the steps of the grid must be finite.");
  return guarded(options, [&](const FieldOptions& watched) {
    const AffinePoints points(grid);
    if (points.count() == 0 || !isAlongAxes(grid))
      return evaluate(pistons_, k_, points, watched, report);
    double rounding = 0;
    const AxesGrid axes{axisOf(grid, 0, rounding), axisOf(grid, 1, rounding),
                        axisOf(grid, 2, rounding)};
    return evaluateOnAxes(pistons_, k_, axes, rounding, watched, report);
  });
}

}  // namespace pistonfield
