#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>
#include <utility>

#include "field/Checks.h"
#include "field/Guarded.h"
#include "field/Magnitudes.h"
#include "field/SortedPoints.h"
#include "field/Vectors.h"
#include "field/Zeros.h"
#include "field/spectrum.h"
#include "field/spectrum/SpectrumEvaluation.h"

namespace pistonfield {
namespace {

void check(const WaveNumbers& waves) {
  if (!std::isfinite(waves.first) || !std::isfinite(waves.step))
    throw FieldError("The first wave number and the step must be finite.");
  if (waves.count == 0) return;
  checkWaveNumber(waves.first);
  checkWaveNumber(waveNumberAt(waves, static_cast<double>(waves.count - 1)));
}

/// The pistons with exact rotations.
std::vector<Field::Piston> checked(std::vector<Field::Piston> pistons, double mostWaveNumber) {
  for (std::size_t n = 0; n < pistons.size(); ++n) {
    check(pistons[n], n);
    pistons[n].axes = orthonormal(pistons[n].axes);
    if (mostWaveNumber > 0) checkScale(pistons[n], wavelengthsPerUnit(mostWaveNumber), n);
  }
  return pistons;
}

bool isAnyTooFar(const Position* points, std::size_t count, double mostWaveNumber) {
  return std::any_of(points, points + count, [&](const Position& p) {
    return finite(p) && std::any_of(p.begin(), p.end(), [&](double coordinate) {
             return std::fabs(coordinate) * wavelengthsPerUnit(mostWaveNumber) > mostWavelengths;
           });
  });
}

constexpr std::size_t leastPointsToSort = 64;

/// Larger ones take hardly less time.
constexpr double mostTolerance = 1e-3;

/// A lower bound of the largest magnitude, from some points and wave numbers.
double peakOf(const std::vector<Field::Piston>& pistons, const WaveNumbers& waves,
              const Points& points, const std::function<void(double)>& progress) {
  constexpr std::size_t most = 3;
  const std::size_t tried = std::min(waves.count, most);
  double peak = 0;
  for (std::size_t n = 0; n < tried; ++n) {
    const std::size_t m = tried == 1 ? 0 : (waves.count - 1) * n / (tried - 1);
    peak = std::max(peak,
                    peakOf(pistons, waveNumberAt(waves, static_cast<double>(m)), points, progress));
  }
  return peak;
}

/// Adds the spectra for an absolute tolerance.
Used addSpectra(const std::vector<Field::Piston>& pistons, const WaveNumbers& waves,
                const Points& points, const std::vector<std::size_t>& indices, double tolerance,
                const SpectrumOptions& options, std::vector<std::complex<double>>& pressures) {
  Work work(options.progress,
            static_cast<double>(points.count()) * static_cast<double>(waves.count));
  work.advance(0);
  SpectrumEvaluation evaluation(pistons, waves, points, tolerance);
  evaluation.run(indices, pressures.data(), work);
  return evaluation.used();
}

double largestOf(const std::vector<std::complex<double>>& pressures) {
  double largest = 0;
  for (const std::complex<double>& p : pressures)
    if (std::abs(p) > largest) largest = std::abs(p);
  return largest;
}

/// The spectra of pistons that radiate, at points of which the n-th is number indices[n] in the
/// result, where there are some.
std::vector<std::complex<double>> evaluate(std::vector<Field::Piston> pistons,
                                           const WaveNumbers& waves, const Points& points,
                                           const std::vector<std::size_t>& indices,
                                           const SpectrumOptions& options, FieldReport* report) {
  auto pressures = zeros<std::complex<double>>(points.count() * waves.count);
  const int scale = takeScale(pistons);
  if (pistons.empty() || mostOf(waves) == 0) return pressures;
  double peak = peakOf(pistons, waves, points, options.progress),
         tolerance = std::min(options.tolerance, mostTolerance);
  const auto add = [&] {
    return addSpectra(pistons, waves, points, indices, tolerance * peak, options, pressures);
  };
  Used used = add();
  if (used.excess > 1) {
    // The few points of which the peak was estimated may have missed it.
    const double largest = largestOf(pressures) - tolerance * peak * used.excess;
    const bool hasMissed = largest > 1.5 * peak;
    if (hasMissed || tolerance < options.tolerance) {
      if (hasMissed) peak = largest;
      tolerance = options.tolerance;
      std::fill(pressures.begin(), pressures.end(), 0.0);
      used = add();
    }
  }
  if (used.excess > 1) refuse(options.tolerance, used);
  if (scale != 0)
    for (std::complex<double>& p : pressures) p = scaled(p, scale);
  if (report)
    *report = {used.mostOrder > 0 ? used.leastOrder : 0,
               used.mostOrder,
               used.single,
               used.precise,
               static_cast<double>(used.nodes),
               std::ldexp(tolerance * peak, scale)};
  return pressures;
}

/// Marks the points that are not finite.
void markLost(const Position* points, std::size_t count, std::size_t length,
              std::vector<std::complex<double>>& pressures) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (std::size_t n = 0; n < count; ++n)
    if (!finite(points[n]))
      std::fill_n(&pressures[length * n], length, std::complex<double>(nan, nan));
}

}  // namespace

std::vector<std::complex<double>> spectrum(const std::vector<Field::Piston>& pistons,
                                           const WaveNumbers& waveNumbers,
                                           const std::vector<Position>& points,
                                           const SpectrumOptions& options, FieldReport* report) {
  return spectrum(pistons, waveNumbers, points.data(), points.size(), options, report);
}

std::vector<std::complex<double>> spectrum(const std::vector<Field::Piston>& pistons,
                                           const WaveNumbers& waveNumbers, const Position* points,
                                           std::size_t count, const SpectrumOptions& options,
                                           FieldReport* report) {
  return guarded(options, [&](const SpectrumOptions& watched) {
    if (report) *report = {};
    check(waveNumbers);
    checkTolerance(watched.tolerance);
    const double most = waveNumbers.count > 0 ? mostOf(waveNumbers) : 0;
    std::vector<Field::Piston> valid = checked(pistons, most);
    if (count == 0 || waveNumbers.count == 0) return std::vector<std::complex<double>>();
    if (isAnyTooFar(points, count, most)) refuseFarPoint();
    if (count > std::numeric_limits<std::size_t>::max() / waveNumbers.count) throw std::bad_alloc();
    std::vector<std::complex<double>> pressures;
    if (count < leastPointsToSort) {
      std::vector<std::size_t> indices(count);
      std::iota(indices.begin(), indices.end(), std::size_t{0});
      pressures = evaluate(std::move(valid), waveNumbers, ListPoints(points, count), indices,
                           watched, report);
    } else {
      const SortedPoints sorted(points, count, watched.progress);
      pressures =
          evaluate(std::move(valid), waveNumbers, sorted, sorted.indices(), watched, report);
    }
    markLost(points, count, waveNumbers.count, pressures);
    return pressures;
  });
}

}  // namespace pistonfield
