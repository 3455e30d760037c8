#include "field/pulse/ApertureField.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "field/DeviceEvaluation.h"
#include "field/Evaluation.h"
#include "field/Points.h"
#include "parallel/Cores.h"
#include "parallel/Spread.h"

namespace pistonfield {
namespace {

using Complex = std::complex<double>;
using Progress = std::function<void(double part)>;

/// The pressures of one aperture at one frequency.
struct Pressures {
  std::vector<Complex> values;
  double error = 0, nodes = 0;

  double largest() const {
    double largest = 0;
    for (const Complex& p : values) largest = std::max(largest, std::abs(p));
    return largest;
  }
};

/// How many points times pistons times frequencies are evaluated on each core between two calls of
/// the progress function.
constexpr double pieceWork = 1 << 17;

/// An evaluation whose rounding errors are more than the tolerance, once more as Field does it in
/// a lossy medium: by parts of pistons.
void improve(Pressures& pressures, const std::vector<Field::Piston>& pistons, Complex k,
             double tolerance, const std::vector<Position>& points, const Progress& advance) {
  FieldOptions options;
  options.tolerance = std::clamp(tolerance / pressures.largest(), 1e-12, 0.5);
  options.progress = [&](double) { advance(0); };
  FieldReport report;
  try {
    const std::vector<Complex> better = Field(pistons, k).at(points, options, &report);
    pressures.nodes += report.nodes;
    if (!(report.bound < pressures.error)) return;
    pressures.values = better;
    pressures.error = report.bound;
  } catch (const FieldError&) {  // the values stay as good as they are
  }
}

/// The pressures of one aperture at all frequencies, each for its own absolute tolerance. The parts
/// of the work add up to `part`.
std::vector<Pressures> pressuresOf(const Aperture& aperture,
                                   const std::vector<Frequency>& frequencies,
                                   const std::vector<double>& tolerances,
                                   const std::vector<Position>& points, double part,
                                   const Progress& advance) {
  std::vector<Pressures> results(frequencies.size());
  const ListPoints list(points.data(), points.size());
  const auto finish = [&](std::size_t n, const Used& used) {
    results[n].error = tolerances[n] * std::max(used.excess, 1.0);
    results[n].nodes = static_cast<double>(used.nodes);
  };
  const auto evaluation = [&](std::size_t n) {
    return Evaluation(aperture.at(frequencies[n].omega), frequencies[n].k, tolerances[n], 0);
  };
  const bool isOnDevice = DeviceEvaluation::isFaster(points.size(), aperture.size());
  const double work = static_cast<double>(points.size()) * static_cast<double>(aperture.size());
  const std::size_t inPiece =
      isOnDevice ? 1 : static_cast<std::size_t>(std::ceil(pieceWork * parallel::cores() / work));
  for (std::size_t first = 0; first < results.size(); first += inPiece) {
    const std::size_t count = std::min(inPiece, results.size() - first);
    for (std::size_t n = first; n < first + count; ++n) results[n].values.resize(points.size());
    if (isOnDevice) {
      Evaluation one = evaluation(first);
      Work silent([&](double) { advance(0); }, 1);
      one.run(list, results[first].values.data(), silent);
      finish(first, one.used());
    } else {
      parallel::spread(count, 1, [&](std::uint64_t begin, std::uint64_t end) {
        for (std::uint64_t n = first + begin; n < first + end; ++n) {
          Used used = nothingUsed();
          evaluation(n).runHere(list, 0, points.size(), results[n].values.data(), used);
          finish(n, used);
        }
      });
    }
    for (std::size_t n = first; n < first + count; ++n)
      if (results[n].error > tolerances[n] && frequencies[n].k.imag() != 0)
        improve(results[n], aperture.at(frequencies[n].omega), frequencies[n].k, tolerances[n],
                points, advance);
    advance(part * static_cast<double>(count) / static_cast<double>(results.size()));
  }
  return results;
}

}  // namespace

LinkedPressures linkedPressures(const Link& link, const std::vector<Frequency>& frequencies,
                                const std::vector<Position>& points, double tolerance,
                                const Progress& advance) {
  double factors = 0;
  for (const Frequency& one : frequencies) factors += std::abs(one.factor);
  const double share = tolerance / factors;  // of a frequency's product of pressures
  const double part = 1.0 / static_cast<double>(link.apertures.size());
  LinkedPressures all{std::vector<Complex>(points.size() * frequencies.size(), 1), 0, 0};
  // Of the product so far.
  std::vector<double> errors(frequencies.size(), 0), largest(frequencies.size(), 1);
  for (std::size_t m = 0; m < link.apertures.size(); ++m) {
    const Aperture& aperture = link.apertures[m];
    std::vector<double> tolerances(frequencies.size());
    for (std::size_t n = 0; n < frequencies.size(); ++n) {
      double others = largest[n] + errors[n];
      for (std::size_t later = m + 1; later < link.apertures.size(); ++later)
        others *= 2 * link.apertures[later].weight();
      // More than this is not worth it.
      const double most = aperture.weight() / 10;
      tolerances[n] = others > 0 ? std::min(share * part / others, most) : most;
    }
    const std::vector<Pressures> pressures =
        pressuresOf(aperture, frequencies, tolerances, points, part, advance);
    for (std::size_t n = 0; n < frequencies.size(); ++n) {
      for (std::size_t at = 0; at < points.size(); ++at)
        all.values[at * frequencies.size() + n] *= pressures[n].values[at];
      const double most = pressures[n].largest();
      errors[n] = errors[n] * (most + pressures[n].error) + largest[n] * pressures[n].error;
      largest[n] *= most;
      all.nodes += pressures[n].nodes;
    }
  }
  for (std::size_t n = 0; n < frequencies.size(); ++n)
    all.error += std::abs(frequencies[n].factor) * errors[n];
  return all;
}

}  // namespace pistonfield
