#include "field/spectrum/SpectrumOfTile.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "FastNearfield/intervals/Delay.h"

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846;

constexpr std::size_t columnLength = rowsTogether;
static_assert(pointsOfTile % columnLength == 0);

/// How many wave numbers of each point are computed before they are written point by point, so
/// that they stay in the first-level cache.
constexpr std::size_t together = 32;

/// Phases are computed anew after so many steps, in units of `together`.
constexpr std::size_t restart = 4;

/// In units of 2^-53, of phases: of their lengths, relative to k·R; and of their products.
constexpr double phaseRounding = 8, productRounding = 4.0 * restart * together;

}  // namespace

double errorOfWave(const PistonsTogether& group) {
  return std::min(interpolationShare * group.tolerance / (mostOfWaves * group.weight), 0.1);
}

SpectrumOfTile::SpectrumOfTile(SpectrumEvaluation& evaluation,
                               const std::vector<std::size_t>& indices,
                               std::complex<double>* pressures, std::size_t first,
                               std::size_t count, Used& used)
    : evaluation_(evaluation),
      indices_(indices),
      pressures_(pressures),
      first_(first),
      count_(count),
      used_(used),
      filters_(addFiltered(instructionSet())),
      paths_(evaluation.points_, first, count),
      values_(count),
      turns_(pointsOfTile),
      cosines_(pointsOfTile),
      sines_(pointsOfTile) {}

void SpectrumOfTile::add(const PistonsTogether& group, std::size_t begin, std::size_t end) {
  paths_.measure(group.pistons.data(), group.pistons.size());
  const std::size_t count = end - begin;
  const BandPlan plan = bandPlan(count, std::fabs(evaluation_.waves_.step) * paths_.range,
                                 group.pistons.size(), errorOfWave(group));
  if (plan.nodes == 0) return addOneByOne(group, begin, end);
  const BandInterpolation& interpolation = evaluation_.interpolation(plan);
  for (std::size_t first = begin; first < end; first += plan.length) {
    const std::size_t last = std::min(first + plan.length, end);
    // The last band is as long as the others.
    const Band band{last - plan.length, plan.length, last - first};
    if (!addInterpolated(group, interpolation, band)) addOneByOne(group, first, last);
  }
}

void SpectrumOfTile::evaluate(const PistonsTogether& group, double k, double tolerance,
                              Used& used) {
  Evaluation(group.pistons, k, tolerance, evaluation_.points_.shift())
      .runHere(evaluation_.points_, first_, count_, values_.data(), used);
}

/// Adds value(n, m − begin) to the pressures of some points at the wave numbers begin ... end − 1.
template <class Value>
void SpectrumOfTile::addRows(std::size_t begin, std::size_t end, std::size_t firstPoint,
                             std::size_t points, const Value& value) {
  for (std::size_t n = 0; n < points; ++n) {
    std::complex<double>* const row =
        pressures_ + evaluation_.waves_.count * indices_[first_ + firstPoint + n] + begin;
    for (std::size_t m = 0; m < end - begin; ++m) row[m] += value(n, m);
  }
}

void SpectrumOfTile::addOneByOne(const PistonsTogether& group, std::size_t begin, std::size_t end) {
  std::array<std::complex<double>, pointsOfTile * together> columns;
  for (std::size_t first = begin; first < end; first += together) {
    const std::size_t last = std::min(first + together, end);
    for (std::size_t m = first; m < last; ++m) {
      evaluate(group, waveNumberAt(evaluation_.waves_, static_cast<double>(m)), group.tolerance,
               used_);
      std::copy(values_.begin(), values_.end(), &columns[(m - first) * pointsOfTile]);
    }
    addRows(first, last, 0, count_,
            [&](std::size_t n, std::size_t m) { return columns[m * pointsOfTile + n]; });
  }
}

/// Returns whether the tolerance is kept; otherwise nothing is added.
bool SpectrumOfTile::addInterpolated(const PistonsTogether& group,
                                     const BandInterpolation& interpolation, const Band& band) {
  const std::vector<double>& nodes = interpolation.nodes();
  const std::size_t columns = (count_ + columnLength - 1) / columnLength;
  re_.assign(columns * nodes.size() * columnLength, 0);
  im_.assign(re_.size(), 0);
  Used used = nothingUsed();
  double largest = 0;
  for (std::size_t j = 0; j < nodes.size(); ++j) {
    const double k = waveNumberAt(evaluation_.waves_, static_cast<double>(band.first) + nodes[j]);
    evaluate(group, k, nodeShare * group.tolerance / interpolation.factorSum(), used);
    if (used.excess > 1) return false;
    for (std::size_t n = 0; n < count_; ++n) turns_[n] = k / (2 * pi) * paths_.middle[n];
    cosineAndSine(turns_.data(), static_cast<int>(count_), cosines_.data(), sines_.data());
    for (std::size_t n = 0; n < count_; ++n) {
      const std::size_t at =
          (n / columnLength * nodes.size() + j) * columnLength + n % columnLength;
      const double re = values_[n].real(), im = values_[n].imag();
      re_[at] = re * cosines_[n] - im * sines_[n];
      im_[at] = im * cosines_[n] + re * sines_[n];
      // Of the numbers: some points may have none.
      if (const double square = re * re + im * im; square > largest) largest = square;
    }
  }
  largest = std::sqrt(largest);
  const double units = interpolation.factorSum() / (roundingShare * group.tolerance),
               filtered = filterRounding * largest * units,
               phases =
                   (phaseRounding * evaluation_.mostWaveNumber_ * paths_.most + productRounding) *
                   (largest + group.weight) * units;
  if (!((filtered + phases) * 0x1p-53 <= 1)) return false;
  used_ = bothUsed(used_, used);
  if (filtered * 0x1p-24 + phases * 0x1p-53 <= 1)
    interpolate<float>(interpolation, band, filters_.single);
  else
    interpolate<double>(interpolation, band, filters_.precise);
  return true;
}

template <class Real>
void SpectrumOfTile::interpolate(const BandInterpolation& interpolation, const Band& band,
                                 AddFiltered<Real>* addColumn) {
  const std::vector<Real> columnsRe(re_.begin(), re_.end()), columnsIm(im_.begin(), im_.end());
  const auto phasesAt = [&](double k, std::size_t block, const Column& column) {
    const std::size_t first = block * columnLength, length = std::min(columnLength, count_ - first);
    for (std::size_t n = 0; n < length; ++n) turns_[n] = -k / (2 * pi) * paths_.middle[first + n];
    cosineAndSine(turns_.data(), static_cast<int>(length), column.re, column.im);
  };
  std::array<double, columnLength> phaseRe{}, phaseIm{}, stepRe{}, stepIm{};
  const Column phases{phaseRe.data(), phaseIm.data()}, steps{stepRe.data(), stepIm.data()};
  for (std::size_t block = 0; block * columnLength < count_; ++block) {
    const std::size_t points = std::min(columnLength, count_ - block * columnLength),
                      from = block * interpolation.nodes().size() * columnLength,
                      last = band.first + band.count;
    phasesAt(evaluation_.waves_.step, block, steps);
    std::size_t pieces = 0;
    for (std::size_t begin = last - band.added; begin < last; begin += together, ++pieces) {
      if (pieces % restart == 0)
        phasesAt(waveNumberAt(evaluation_.waves_, static_cast<double>(begin)), block, phases);
      const std::size_t end = std::min(begin + together, last);
      std::array<double, together * columnLength> re{}, im{};
      for (std::size_t m = begin; m < end; ++m) {
        const Column column{&re[(m - begin) * columnLength], &im[(m - begin) * columnLength]};
        addColumn(interpolation.filter<Real>(m - band.first), &columnsRe[from], &columnsIm[from],
                  column.re, column.im);
        filters_.turn(column, phases, steps);
      }
      addRows(begin, end, block * columnLength, points, [&](std::size_t n, std::size_t m) {
        return std::complex<double>(re[m * columnLength + n], im[m * columnLength + n]);
      });
    }
  }
}

}  // namespace pistonfield
