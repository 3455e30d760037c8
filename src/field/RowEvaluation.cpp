#include "field/RowEvaluation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

#include "field/Vectors.h"
#include "field/filter/RowFilter.h"
#include "parallel/Cores.h"
#include "parallel/Spread.h"

namespace pistonfield {
namespace {

// Of the tolerance.
constexpr double interpolationShare = 0.125, roundingShare = 0.25,
                 sampleShare = 1 - interpolationShare - roundingShare;

constexpr std::array halfTapsToTry = {4, 6, 8, 12, 16, mostHalfTaps};

// In evaluations of one piston at one point.
constexpr double costOfFactor = 1.0 / 200, costOfPoint = 0.15;

constexpr std::size_t columnLength = rowsTogether;

/// How many points of each row are computed before they are written row by row, so that they stay
/// in the first-level cache.
constexpr std::size_t columnsTogether = 16;

constexpr double pi = 3.14159265358979323846;

/// How many points times pistons a batch has, if none is sampled: some hundredths of a second.
constexpr std::size_t batchWork = 1 << 20;

/// How many batches a core evaluates between two calls of `progress`.
constexpr std::size_t batchesTogether = 4;

/// The error of interpolation that a piston of weight 1 may have; for weak pistons, below that of
/// the pressure itself.
double errorOf(const EqualPistons& group, double tolerance) {
  return std::min(interpolationShare * tolerance / group.weightSum(), 0.1);
}

/// Pistons of a group are at most so far apart, and batches about as long.
constexpr double mostSamplesApart = 1 << 12;

/// The most samples that a batch takes of a row: it takes some megabytes.
constexpr double mostSamples = 1 << 14;

double apertureOf(const EqualPistons& group) { return group.most - group.least; }

/// Of rows from a plane.
struct Distance {
  double least;
  double slope;  ///< its change along a row, per unit of length
};

struct Plan {
  std::optional<Lattice> lattice;
  double cost;
};

/// The least distance of `length` points from `first` on of rows from the plane of the first
/// piston, where its field is needed for the others.
Distance distanceOf(const EqualPistons& group, const Position& step,
                    const std::vector<Position>& origins, std::size_t first, std::size_t length) {
  const Field::Piston& piston = group.pistons.front();
  const double rise = dot(piston.axes[2], step);
  const double from = (static_cast<double>(first) - group.most) * rise,
               to = (static_cast<double>(first + length - 1) - group.least) * rise;
  double nearest = std::numeric_limits<double>::infinity();
  for (const Position& origin : origins)
    nearest = std::min(nearest, dot(piston.axes[2], difference(origin, piston.centre)));
  return {nearest + std::min(from, to), std::fabs(rise) / std::sqrt(dot(step, step))};
}

/// How many steps it is along a row from a point to a piston.
double stepsTo(const Field::Piston& piston, const Position& from, const Rows& rows) {
  return dot(difference(piston.centre, from), rows.step) / dot(rows.step, rows.step);
}

/// The sine of the angle between a row and the nearer side of the piston. If it is 0, the field is
/// even in the position along the row, about the piston's centre.
double sineTo(const Field::Piston& piston, const Position& step) {
  double least = 1;
  for (std::size_t n = 0; n < 2; ++n) {
    const Position& axis = piston.axes[n];
    const double along = dot(axis, step) / dot(step, step);
    const Position across = {axis[0] - along * step[0], axis[1] - along * step[1],
                             axis[2] - along * step[2]};
    least = std::min(least, std::sqrt(dot(across, across)));
  }
  return least;
}

/// The fastest way to compute `length` points of `rowCount` rows at this distance from the plane of
/// the pistons.
Plan planFor(const EqualPistons& group, double step, std::size_t length, std::size_t rowCount,
             Distance distance, double k, double error) {
  const double points = static_cast<double>(length), aperture = apertureOf(group),
               pistons = static_cast<double>(group.pistons.size()),
               padding = static_cast<double>(columnLength) / static_cast<double>(rowCount);
  Plan plan{std::nullopt, points * pistons};
  const auto consider = [&](const Lattice& lattice) {
    const double samplesAStep =
        static_cast<double>(lattice.samples) / static_cast<double>(lattice.steps);
    const double taps = 2 * lattice.halfTaps;
    if (aperture * samplesAStep > mostSamplesApart) return;
    const double samples = (points + aperture) * samplesAStep + taps;
    if (samples > mostSamples) return;
    const double factors =
        lattice.halfTaps == 0 ? pistons : std::min(aperture * samplesAStep + taps, pistons * taps);
    const double cost =
        samples * (1 + costOfPoint) + points * (factors * costOfFactor * padding + costOfPoint);
    if (cost < plan.cost) plan = {lattice, cost};
  };
  constexpr Lattice atTheSteps{};
  if (group.onSteps) consider(atTheSteps);
  for (const int halfTaps : halfTapsToTry) {
    // Samples beyond the ends of a row are at most half a wavelength apart.
    const double z = distance.least - distance.slope * halfTaps * (pi / k);
    if (z > 0)
      if (const auto lattice = latticeFor(step, z, k, error, halfTaps)) consider(*lattice);
  }
  return plan;
}

/// Samples of some rows, column by column: from start·distance on, in steps of the rows, `distance`
/// apart.
class Samples final : public Points {
 public:
  Samples(const std::vector<Position>& origins, const Position& step, double start, double distance,
          std::size_t length)
      : Points(origins.size() * length),
        origins_(origins),
        step_(step),
        start_(start),
        distance_(distance) {}

  void read(std::size_t first, std::size_t count, double* x, double* y, double* z) const override {
    std::size_t column = first / origins_.size(), row = first % origins_.size();
    for (std::size_t n = 0; n < count; ++column, row = 0) {
      const double steps = (start_ + static_cast<double>(column)) * distance_;
      for (; row < origins_.size() && n < count; ++row, ++n) {
        x[n] = origins_[row][0] + steps * step_[0];
        y[n] = origins_[row][1] + steps * step_[1];
        z[n] = origins_[row][2] + steps * step_[2];
      }
    }
  }

 private:
  const std::vector<Position>& origins_;
  const Position step_;
  double start_, distance_;
};

/// `length` points of some rows of a grid, column by column.
class PointsOfRows final : public Points {
 public:
  /// `starts`: the indices of the first points.
  PointsOfRows(const Points& points, const std::vector<std::size_t>& starts, std::size_t stride,
               std::size_t length)
      : Points(starts.size() * length), points_(points), starts_(starts), stride_(stride) {}

  void read(std::size_t first, std::size_t count, double* x, double* y, double* z) const override {
    for (std::size_t n = 0; n < count; ++n) {
      const std::size_t column = (first + n) / starts_.size(), row = (first + n) % starts_.size();
      points_.read(starts_[row] + column * stride_, 1, x + n, y + n, z + n);
    }
  }

 private:
  const Points& points_;
  const std::vector<std::size_t>& starts_;
  std::size_t stride_;
};

/// Columns of rowsTogether numbers.
template <class Real>
struct SplitColumns {
  std::vector<Real> re, im;

  /// From columns of `rowCount` numbers.
  void assign(const std::vector<std::complex<double>>& values, std::size_t rowCount) {
    const std::size_t columns = values.size() / rowCount;
    re.assign(columns * columnLength, 0);
    im.assign(columns * columnLength, 0);
    for (std::size_t column = 0; column < columns; ++column)
      for (std::size_t row = 0; row < rowCount; ++row) {
        re[column * columnLength + row] = static_cast<Real>(values[column * rowCount + row].real());
        im[column * columnLength + row] = static_cast<Real>(values[column * rowCount + row].imag());
      }
  }
};

/// Factors of columns.
struct Factors {
  std::vector<int> columns;
  std::vector<double> re, im;
  std::vector<float> singleRe, singleIm;
  bool isReal = true;

  void add(int column, std::complex<double> factor) {
    columns.push_back(column);
    isReal = isReal && factor.imag() == 0;
    re.push_back(factor.real());
    im.push_back(factor.imag());
    singleRe.push_back(static_cast<float>(factor.real()));
    singleIm.push_back(static_cast<float>(factor.imag()));
  }

  RowFilter<float> filter(float) const {
    return {static_cast<int>(columns.size()), columns.data(), singleRe.data(),
            isReal ? nullptr : singleIm.data()};
  }
  RowFilter<double> filter(double) const {
    return {static_cast<int>(columns.size()), columns.data(), re.data(),
            isReal ? nullptr : im.data()};
  }
};

}  // namespace

/// The pressures in a row from the samples of a lattice: `patterns` has the factors for the points
/// 0, 1 ... of a row. They are used again and again, each time `samples` columns further.
struct RowEvaluation::Filter {
  Lattice lattice;
  /// Of the samples, in their distances: the first piston is at one of them, so that samples are
  /// mirror images of each other.
  double offset = 0;
  int leastSample = 0, mostColumn = 0;
  double factorSum = 0;  ///< of magnitudes, the largest of a pattern
  /// The same for the error of the factors, in units of double precision. Where pistons cancel each
  /// other it can be larger than the factors.
  double placing = 0;
  std::vector<Factors> patterns;
  std::unique_ptr<const Evaluation> samples;
};

struct RowEvaluation::Group {
  EqualPistons members;
  double tolerance;
  InterpolationKernel kernel;
  double interpolationError;  ///< of a piston of weight 1
  Evaluation oneByOne;
  std::mutex mutex;
  std::vector<std::unique_ptr<const Filter>> filters;  ///< of the lattices that were needed

  Group(EqualPistons pistons, std::complex<double> k, double tolerancePerGroup, double shift)
      : members(std::move(pistons)),
        tolerance(tolerancePerGroup),
        kernel(errorOf(members, tolerance)),
        interpolationError(errorOf(members, tolerance)),
        oneByOne(members.pistons, k, tolerance, shift) {}
};

RowEvaluation::Cost RowEvaluation::cost(const EqualPistons& group, const Rows& rows,
                                        const Points& points, std::complex<double> k,
                                        double tolerance, std::size_t most) {
  const std::size_t tried = std::min(rows.count, most);
  Cost cost{0, static_cast<double>(points.count()) * static_cast<double>(group.pistons.size())};
  for (std::size_t n = 0; n < tried; ++n) {
    const std::vector<Position> origin = {points.position(rows.first(rows.count / tried * n))};
    const Plan plan = planFor(group, std::sqrt(dot(rows.step, rows.step)), rows.length,
                              std::min(rows.count, columnLength),
                              distanceOf(group, rows.step, origin, 0, rows.length),
                              std::fabs(k.real()), errorOf(group, tolerance));
    cost.byRows += plan.cost * static_cast<double>(rows.count) / static_cast<double>(tried);
  }
  return cost;
}

RowEvaluation::RowEvaluation(std::vector<EqualPistons> groups, const Rows& rows,
                             const Points& points, std::complex<double> k, double tolerance,
                             double shift)
    : rows_(rows), points_(points), k_(k), shift_(shift), used_(nothingUsed()) {
  std::size_t count = 0;
  for (const EqualPistons& group : groups) count += group.pistons.size();
  segment_ =
      std::clamp<std::size_t>(batchWork / columnLength / std::max<std::size_t>(count, 1), 8, 1024);
  for (EqualPistons& group : groups) {
    const double share = static_cast<double>(group.pistons.size()) / static_cast<double>(count);
    segment_ = std::max(
        segment_, static_cast<std::size_t>(std::min(4 * apertureOf(group), mostSamplesApart)));
    groups_.push_back(
        std::make_unique<Group>(std::move(group), k, share * tolerance, points.shift()));
  }
  segment_ = std::min(segment_, rows.length);
}

RowEvaluation::~RowEvaluation() = default;

const RowEvaluation::Filter& RowEvaluation::filterOf(Group& group, const Lattice& lattice) {
  const std::lock_guard lock(group.mutex);
  for (const auto& filter : group.filters)
    if (filter->lattice == lattice) return *filter;
  auto filter = std::make_unique<Filter>();
  filter->lattice = lattice;
  const EqualPistons& members = group.members;
  const double samplesAStep = static_cast<double>(lattice.samples) / lattice.steps;
  if (lattice.halfTaps > 0) {
    const double at = samplesAStep * stepsTo(members.pistons.front(), points_.position(0), rows_);
    if (std::isfinite(at)) filter->offset = at - std::round(at);
  }
  const int least =
      static_cast<int>(std::floor(-members.most * samplesAStep - 0.5)) - lattice.halfTaps;
  const int most =
      static_cast<int>(std::ceil((lattice.steps - members.least) * samplesAStep + 0.5)) +
      lattice.halfTaps;
  filter->leastSample = least;
  for (int pattern = 0; pattern < lattice.steps; ++pattern) {
    std::vector<std::complex<double>> sum(static_cast<std::size_t>(most - least + 1));
    double placing = 0;
    for (std::size_t m = 0; m < members.pistons.size(); ++m) {
      const double at =
          (pattern - members.displacements[m]) * samplesAStep - filter->offset - least;
      const std::complex<double> weight = members.pistons[m].weight;
      if (lattice.halfTaps == 0) {
        sum[static_cast<std::size_t>(std::lround(at))] += weight;
        placing += std::abs(weight);
        continue;
      }
      const double before = std::floor(at);
      const auto halfTaps = static_cast<std::size_t>(lattice.halfTaps);
      std::array<double, std::size_t{2} * mostHalfTaps> factors;
      group.kernel.factors(at - before, lattice.halfTaps, factors.data());
      const std::size_t from = static_cast<std::size_t>(before) + 1 - halfTaps;
      // A field changes by less than π times its largest magnitude from sample to sample.
      placing += std::abs(weight) * 4 * (at - least);
      for (std::size_t n = 0; n < 2 * halfTaps; ++n) {
        sum[from + n] += factors[n] * weight;
        placing += std::abs(weight) * 8 * std::fabs(factors[n]);
      }
    }
    Factors factors;
    double magnitudes = 0;
    for (std::size_t n = 0; n < sum.size(); ++n) {
      if (sum[n] == 0.0) continue;
      factors.add(static_cast<int>(n), sum[n]);
      magnitudes += std::abs(sum[n]);
    }
    if (!factors.columns.empty())
      filter->mostColumn = std::max(filter->mostColumn, factors.columns.back());
    filter->factorSum = std::max(filter->factorSum, magnitudes);
    filter->placing = std::max(filter->placing, placing);
    filter->patterns.push_back(std::move(factors));
  }
  std::vector<Field::Piston> sampled = {members.pistons.front()};
  sampled.front().weight = 1;
  filter->samples = std::make_unique<const Evaluation>(
      sampled, k_, sampleShare * group.tolerance / filter->factorSum, shift_);
  group.filters.push_back(std::move(filter));
  return *group.filters.back();
}

/// Some points of some rows.
class RowEvaluation::Batch {
 public:
  Batch(RowEvaluation& evaluation, Used& used)
      : evaluation_(evaluation), add_(addFiltered(instructionSet())), used_(used) {}

  /// Adds the pressures of `length` points from `first` on of `rowCount` rows.
  void run(std::size_t firstRow, std::size_t rowCount, std::size_t first, std::size_t length,
           std::complex<double>* pressures) {
    const Rows& rows = evaluation_.rows_;
    first_ = first;
    length_ = length;
    origins_.resize(rowCount);
    starts_.resize(rowCount);
    results_.resize(rowCount);
    for (std::size_t row = 0; row < rowCount; ++row) {
      const std::size_t start = rows.first(firstRow + row);
      origins_[row] = evaluation_.points_.position(start);
      starts_[row] = start + first * rows.stride;
      results_[row] = pressures + starts_[row];
    }
    const double step = std::sqrt(dot(rows.step, rows.step));
    for (const auto& group : evaluation_.groups_) {
      const Plan plan = planFor(group->members, step, length, rowCount,
                                distanceOf(group->members, rows.step, origins_, first, length),
                                std::fabs(evaluation_.k_.real()), group->interpolationError);
      if (plan.lattice)
        addFilteredSamples(*group, evaluation_.filterOf(*group, *plan.lattice));
      else
        addOneByOne(group->oneByOne);
    }
  }

 private:
  void addOneByOne(const Evaluation& pistons) {
    evaluate(pistons, PointsOfRows(evaluation_.points_, starts_, evaluation_.rows_.stride, length_),
             used_);
    addColumns([&](std::size_t i, std::size_t row) { return values_[i * origins_.size() + row]; },
               0, length_);
  }

  /// Adds pressure(i, row) to the results of the points `from` to `to` − 1 of each row.
  template <class Pressure>
  void addColumns(const Pressure& pressure, std::size_t from, std::size_t to) {
    const std::size_t stride = evaluation_.rows_.stride;
    for (std::size_t begin = from; begin < to; begin += columnsTogether) {
      const std::size_t end = std::min(begin + columnsTogether, to);
      for (std::size_t row = 0; row < results_.size(); ++row)
        for (std::size_t i = begin; i < end; ++i) results_[row][i * stride] += pressure(i, row);
    }
  }

  void evaluate(const Evaluation& pistons, const Points& points, Used& used) {
    values_.resize(points.count());
    pistons.runHere(points, 0, points.count(), values_.data(), used);
  }

  /// Evaluates the samples `first` to `first` + count − 1. Those that are mirror images of others
  /// are copied.
  void evaluateSamples(const Filter& filter, const Field::Piston& piston, long first,
                       std::size_t count, Used& used) {
    const double distance =
        static_cast<double>(filter.lattice.steps) / static_cast<double>(filter.lattice.samples);
    const auto samples = [&](long from, std::size_t length) {
      return Samples(origins_, evaluation_.rows_.step, static_cast<double>(from) + filter.offset,
                     distance, length);
    };
    const long last = first + static_cast<long>(count) - 1;
    const std::optional<long> mirror = mirrorOf(piston, filter.offset, distance);
    if (!mirror || *mirror <= 2 * first || *mirror >= 2 * last)
      return evaluate(*filter.samples, samples(first, count), used);
    // From the sample next to the centre on, to the farther end.
    const bool isAhead = 2 * last - *mirror >= *mirror - 2 * first;
    const double centre = static_cast<double>(*mirror) / 2;
    const long from = isAhead ? std::lround(std::ceil(centre)) : first,
               to = isAhead ? last : std::lround(std::floor(centre));
    const std::size_t rows = origins_.size();
    evaluate(*filter.samples, samples(from, static_cast<std::size_t>(to - from + 1)), used);
    half_.swap(values_);
    values_.resize(count * rows);
    for (long n = first; n <= last; ++n) {
      const long source = n >= from && n <= to ? n : *mirror - n;
      std::copy_n(&half_[static_cast<std::size_t>(source - from) * rows], rows,
                  &values_[static_cast<std::size_t>(n - first) * rows]);
    }
  }

  /// If the piston's field has mirror images in all rows: the sum of the numbers of two samples
  /// that are images of each other.
  std::optional<long> mirrorOf(const Field::Piston& piston, double offset, double distance) const {
    const Rows& rows = evaluation_.rows_;
    const double step = std::sqrt(dot(rows.step, rows.step)),
                 negligible = evaluation_.shift_ / step,
                 rowLength = step * static_cast<double>(rows.length),
                 sine = sineTo(piston, rows.step);
    std::optional<long> sum;
    for (const Position& origin : origins_) {
      const Position apart = difference(origin, piston.centre);
      const double reach = std::sqrt(dot(apart, apart)) + rowLength;
      if (!(2 * sine * reach <= evaluation_.shift_)) return std::nullopt;
      const double twice = 2 * (stepsTo(piston, origin, rows) / distance - offset);
      if (!(std::fabs(twice) < 0x1p30)) return std::nullopt;
      const long nearest = std::lround(twice);
      if (std::fabs(twice - static_cast<double>(nearest)) * distance > negligible ||
          (sum && *sum != nearest))
        return std::nullopt;
      sum = nearest;
    }
    return sum;
  }

  void addFilteredSamples(const Group& group, const Filter& filter) {
    const auto steps = static_cast<std::size_t>(filter.lattice.steps),
               samples = static_cast<std::size_t>(filter.lattice.samples);
    const std::size_t firstCycle = first_ / steps, lastCycle = (first_ + length_ - 1) / steps;
    const std::size_t sampleCount =
        (lastCycle - firstCycle) * samples + static_cast<std::size_t>(filter.mostColumn) + 1;
    Used used = nothingUsed();
    evaluateSamples(filter, group.members.pistons.front(),
                    static_cast<long>(firstCycle * samples) + filter.leastSample, sampleCount,
                    used);
    double largest = 0;
    for (const std::complex<double>& value : values_) largest = std::max(largest, std::norm(value));
    const double scale = std::sqrt(largest) / (roundingShare * group.tolerance),
                 rounding = filterRounding * filter.factorSum * scale;
    used.excess = std::max(used.excess, (rounding + filter.placing * scale) * 0x1p-53);
    if (used.excess > 1) return addOneByOne(group.oneByOne);  // without the filter's rounding
    used_ = bothUsed(used_, used);
    if (rounding * 0x1p-24 <= 1)
      add(filter, add_.single, single_);
    else
      add(filter, add_.precise, precise_);
  }

  template <class Real>
  void add(const Filter& filter, AddFiltered<Real>* addColumn, SplitColumns<Real>& samples) {
    samples.assign(values_, origins_.size());
    const std::size_t steps = filter.patterns.size(), firstCycle = first_ / steps;
    for (std::size_t begin = 0; begin < length_; begin += columnsTogether) {
      const std::size_t end = std::min(begin + columnsTogether, length_);
      std::array<double, columnsTogether * columnLength> re{}, im{};
      for (std::size_t i = begin; i < end; ++i) {
        const std::size_t cycle = (first_ + i) / steps - firstCycle, pattern = (first_ + i) % steps;
        const std::size_t from =
            cycle * static_cast<std::size_t>(filter.lattice.samples) * columnLength;
        addColumn(filter.patterns[pattern].filter(Real()), &samples.re[from], &samples.im[from],
                  &re[(i - begin) * columnLength], &im[(i - begin) * columnLength]);
      }
      addColumns(
          [&](std::size_t i, std::size_t row) {
            const std::size_t n = (i - begin) * columnLength + row;
            return std::complex<double>(re[n], im[n]);
          },
          begin, end);
    }
  }

  RowEvaluation& evaluation_;
  const AddFilteredInPacks add_;
  Used& used_;
  std::size_t first_ = 0, length_ = 0;
  std::vector<Position> origins_;               ///< the rows' first points
  std::vector<std::size_t> starts_;             ///< the indices of the batch's first points
  std::vector<std::complex<double>*> results_;  ///< of those
  std::vector<std::complex<double>> values_, half_;
  SplitColumns<float> single_;
  SplitColumns<double> precise_;
};

void RowEvaluation::run(std::complex<double>* pressures, Work& work) {
  std::mutex usedMutex;
  const std::size_t segments = (rows_.length + segment_ - 1) / segment_,
                    rowBatches = (rows_.count + columnLength - 1) / columnLength,
                    batches = segments * rowBatches;
  const std::size_t pieceSize = batchesTogether * parallel::cores();
  for (std::size_t piece = 0; piece < batches; piece += pieceSize) {
    const std::size_t last = std::min(piece + pieceSize, batches);
    parallel::spread(last - piece, 1, [&](std::uint64_t begin, std::uint64_t end) {
      Used used = nothingUsed();
      Batch batch(*this, used);
      for (std::size_t n = piece + begin; n < piece + end; ++n) {
        const std::size_t row = n / segments * columnLength, first = n % segments * segment_;
        batch.run(row, std::min(columnLength, rows_.count - row), first,
                  std::min(segment_, rows_.length - first), pressures);
      }
      const std::lock_guard lock(usedMutex);
      used_ = bothUsed(used_, used);
    });
    if (used_.excess > 1 && !std::isinf(used_.excess)) return;
    work.advance(static_cast<double>(points_.count()) * static_cast<double>(last - piece) /
                 static_cast<double>(batches));
  }
}

}  // namespace pistonfield
