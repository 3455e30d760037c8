#include "field/SharedRows.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "field/Vectors.h"
#include "field/interpolation/AddInterpolated.h"
#include "parallel/Spread.h"

namespace pistonfield {
namespace {

constexpr int taps = interpolationTaps, before = taps / 2 - 1;  // of these, before the point
constexpr int densest = 32;                                     // samples a step
constexpr std::size_t mostComparisons = 10000000;  // of pistons, while groups are looked for
constexpr std::size_t batchSize = 1 << 17;         // samples that are evaluated together

bool isEqual(const Field::Piston& p, const Field::Piston& q) {
  return p.width == q.width && p.height == q.height && p.axes == q.axes;
}

/// Some rows of a grid: `length` samples of each from start·step on, `density` a step.
class SampledRows final : public Points {
 public:
  SampledRows(const Points& points, const Rows& rows, std::size_t firstRow, std::size_t rowCount,
              double start, std::size_t length, int density)
      : Points(rowCount * length),
        points_(points),
        rows_(rows),
        firstRow_(firstRow),
        start_(start),
        length_(length),
        density_(density) {}

  void read(std::size_t first, std::size_t count, double* x, double* y, double* z) const override {
    for (std::size_t n = 0; n < count;) {
      const std::size_t row = (first + n) / length_;
      const Position origin = points_.position((firstRow_ + row) * rows_.length);
      for (std::size_t j = (first + n) % length_; j < length_ && n < count; ++j, ++n) {
        const double steps = start_ + static_cast<double>(j) / density_;
        x[n] = origin[0] + steps * rows_.step[0];
        y[n] = origin[1] + steps * rows_.step[1];
        z[n] = origin[2] + steps * rows_.step[2];
      }
    }
  }

 private:
  const Points& points_;
  const Rows& rows_;
  std::size_t firstRow_;
  double start_;
  std::size_t length_;
  int density_;
};

/// The factors of `taps` samples at −before … taps − 1 − before for the value at 0 ≤ t ≤ 1.
std::array<double, taps> interpolation(double t) {
  std::array<double, taps> factors;
  for (int n = 0; n < taps; ++n) {
    double factor = 1;
    for (int m = 0; m < taps; ++m)
      if (m != n) factor *= (t - (m - before)) / (n - m);
    factors[static_cast<std::size_t>(n)] = factor;
  }
  return factors;
}

/// How many samples a step keep the interpolation's error below the tolerance in a row at the
/// distance z; 0 if too many.
int densityFor(double step, double z, double k, double tolerance) {
  const double distance = std::min(0.9 * z, taps / k);
  for (int density = 1; density <= densest; ++density) {
    const double error =
        26382 * std::pow(step / density / distance, taps) * 2 * std::exp(k * distance);
    if (error <= tolerance) return density;
  }
  return 0;
}

/// The samples of a row, ordered so that those a step apart are neighbours, real and imaginary
/// parts apart.
struct Samples {
  std::vector<double> re, im;
  std::size_t density, phaseLength;

  Samples(const std::complex<double>* row, std::size_t length, std::size_t samplesAStep)
      : re(length + interpolatedTogether),
        im(re.size()),
        density(samplesAStep),
        phaseLength(length / samplesAStep) {
    for (std::size_t c = 0, n = 0; c < phaseLength; ++c)
      for (std::size_t phase = 0; phase < density; ++phase, ++n) {
        re[phase * phaseLength + c] = row[n].real();
        im[phase * phaseLength + c] = row[n].imag();
      }
  }

  /// The samples `sample`, `sample` + density and so on.
  SplitNumbers from(std::size_t sample) const {
    const std::size_t at = sample % density * phaseLength + sample / density;
    return {re.data() + at, im.data() + at};
  }
};

/// Adds the pistons' pressures in a row of `count` points, from samples that begin `start` steps
/// from its first.
void addRow(const SharedGroup& group, double start, const Samples& samples, std::size_t count,
            std::complex<double>* pressures) {
  AddInterpolated* const add = addInterpolated(instructionSet());
  std::vector<double> re(count + interpolatedTogether), im(re.size());
  for (std::size_t m = 0; m < group.weights.size(); ++m) {
    const double position =
        (-group.displacements[m] - start) * static_cast<double>(samples.density);
    const double first = group.onSamples ? std::round(position) : std::floor(position);
    const auto factors = interpolation(position - first);
    std::array<SplitNumbers, taps> from;
    for (std::size_t n = 0; n < taps; ++n)
      from[n] = samples.from(static_cast<std::size_t>(first) - before + n);
    const double one = 1;
    if (group.onSamples)
      add(&from[before], &one, 1, group.weights[m].real(), group.weights[m].imag(),
          static_cast<int>(count), re.data(), im.data());
    else
      add(from.data(), factors.data(), taps, group.weights[m].real(), group.weights[m].imag(),
          static_cast<int>(count), re.data(), im.data());
  }
  for (std::size_t i = 0; i < count; ++i) pressures[i] += std::complex<double>(re[i], im[i]);
}

}  // namespace

double SharedGroup::weightSum() const {
  double sum = 0;
  for (const std::complex<double>& weight : weights) sum += std::abs(weight);
  return sum;
}

std::vector<SharedGroup> takeSharedGroups(std::vector<Field::Piston>& pistons, const Points& points,
                                          double negligible) {
  std::vector<SharedGroup> groups;
  const Rows rows = points.rows();
  const double step2 = dot(rows.step, rows.step);
  if (rows.length < 8 || !(step2 > 0 && rows.deviation <= negligible)) return groups;
  std::vector<Field::Piston> rest, left;
  std::size_t comparisons = 0;
  for (; !pistons.empty() && comparisons < mostComparisons; pistons.swap(left), left.clear()) {
    comparisons += pistons.size();
    const Field::Piston first = pistons.front();
    SharedGroup group{first, {}, {}, true};
    group.piston.weight = 1;
    std::vector<Field::Piston> taken;
    double least = 0, most = 0;
    for (const Field::Piston& piston : pistons) {
      const Position apart = difference(piston.centre, first.centre);
      const double steps = dot(apart, rows.step) / step2;
      const Position beside = {apart[0] - steps * rows.step[0], apart[1] - steps * rows.step[1],
                               apart[2] - steps * rows.step[2]};
      if (!isEqual(piston, first) || dot(beside, beside) > negligible * negligible) {
        left.push_back(piston);
        continue;
      }
      taken.push_back(piston);
      group.displacements.push_back(steps);
      group.weights.push_back(piston.weight);
      if (std::fabs(steps - std::round(steps)) * std::sqrt(step2) > negligible)
        group.onSamples = false;
      least = std::min(least, steps);
      most = std::max(most, steps);
    }
    // An interpolation takes the time of about two evaluations of a short integral.
    const double samples = static_cast<double>(rows.length) + most - least + taps;
    const double evaluations = static_cast<double>(rows.length) * static_cast<double>(taken.size());
    const bool inPlane = std::fabs(dot(first.axes[2], rows.step)) <= 1e-12 * std::sqrt(step2);
    if (2 * samples <= evaluations && (group.onSamples || inPlane))
      groups.push_back(group);
    else
      rest.insert(rest.end(), taken.begin(), taken.end());
  }
  rest.insert(rest.end(), pistons.begin(), pistons.end());
  pistons.swap(rest);
  return groups;
}

Used addSharedGroup(const SharedGroup& group, double k, double tolerance, const Shift& shift,
                    const Points& points, std::complex<double>* pressures, Work& work) {
  const Rows rows = points.rows();
  const double weightSum = group.weightSum(), step = std::sqrt(dot(rows.step, rows.step));
  const auto [least, most] =
      std::minmax_element(group.displacements.begin(), group.displacements.end());
  // Of the samples, in steps: from that of the point 0 for the piston that is displaced most.
  const double start = group.onSamples ? std::round(-*most) : std::floor(-*most) - before;
  const double farthest = static_cast<double>(rows.length - 1) - *least;
  const double end =
      group.onSamples ? std::round(farthest) : std::floor(farthest) + (taps - before - 1);
  const auto lengthInSteps = static_cast<std::size_t>(end - start) + 1;

  // A quarter of the tolerance is the interpolation's, which also makes the samples' errors grow.
  const double sampleTolerance = tolerance * (group.onSamples ? 1 : 0.75 / 1.63) / weightSum;
  const std::vector<Field::Piston> sampled = {group.piston};
  std::vector<Field::Piston> all;
  for (std::size_t m = 0; m < group.weights.size(); ++m) {
    all.push_back(group.piston);
    for (std::size_t axis = 0; axis < 3; ++axis)
      all.back().centre[axis] += group.displacements[m] * rows.step[axis];
    all.back().weight = group.weights[m];
  }
  Evaluation samples(sampled, k, sampleTolerance, shift), unshared(all, k, tolerance, shift);

  const auto densityOf = [&](std::size_t row) {
    if (group.onSamples) return 1;
    const Position origin = points.position(row * rows.length);
    const double z = dot(group.piston.axes[2], difference(origin, group.piston.centre));
    const int density = z > 0 ? densityFor(step, z, std::fabs(k), tolerance / 4 / weightSum) : 0;
    const bool pays = 2 * static_cast<double>(density) * static_cast<double>(lengthInSteps) <=
                      static_cast<double>(rows.length) * static_cast<double>(group.weights.size());
    return pays ? density : 0;
  };
  for (std::size_t row = 0; row < rows.count;) {
    const int density = densityOf(row);
    const std::size_t length =
        density > 0 ? lengthInSteps * static_cast<std::size_t>(density) : rows.length;
    std::size_t count = 1;
    while (row + count < rows.count && (count + 1) * length <= batchSize &&
           densityOf(row + count) == density)
      ++count;
    const SampledRows batch(points, rows, row, count, density > 0 ? start : 0, length,
                            density > 0 ? density : 1);
    std::vector<std::complex<double>> values(batch.count());
    Work none(nullptr, 1);
    (density > 0 ? samples : unshared).run(batch, values.data(), none);
    parallel::spread(count, 1, [&](std::uint64_t begin, std::uint64_t last) {
      for (std::uint64_t n = begin; n < last; ++n) {
        const std::complex<double>* const from = values.data() + n * length;
        std::complex<double>* const to = pressures + (row + n) * rows.length;
        if (density > 0)
          addRow(group, start, Samples(from, length, static_cast<std::size_t>(density)),
                 rows.length, to);
        else
          for (std::size_t i = 0; i < rows.length; ++i) to[i] += from[i];
      }
    });
    row += count;
    work.advance(static_cast<double>(count * rows.length));
  }
  return bothUsed(samples.used(), unshared.used());
}

}  // namespace pistonfield
