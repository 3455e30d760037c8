#include "field/pulse/Frequencies.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "field/Powers.h"
#include "field/WaveNumber.h"
#include "field/pulse/Fourier.h"

namespace pistonfield {
namespace {

using Complex = std::complex<double>;

constexpr double pi = 3.14159265358979323846;

/// An upper bound of the apertures' pressures, multiplied, at any of the points.
double mostOf(const Link& link, const Extent& extent, Complex k) {
  double most = extent.gain;
  for (std::size_t n = 0; n < link.apertures.size(); ++n) most *= std::abs(k);
  return std::min(extent.limit, most) * exponential(k.imag() * extent.nearest);
}

/// Which samples' spectrum is repeated at how many times their rate, beyond itself.
struct Images {
  int count;
  double rest;  ///< of those beyond
};

/// The images of a spectrum V at n·2π·rate/steps, 0 < n ≤ steps/2. The one around l·2π·rate has the
/// magnitude |V|·(n/(l·steps ± n))^4.
Images imagesOf(const Link& link, const Extent& extent, const std::vector<Complex>& spectrum,
                double steps, double step, double most) {
  double sum = 0;
  for (std::size_t n = 0; n < spectrum.size(); ++n) {
    const double part = static_cast<double>(n + 1) / steps;
    sum += std::abs(spectrum[n]) * part * part * part * part;
  }
  Images images{1, 0};
  for (;; ++images.count) {
    const double cubed = static_cast<double>(images.count) * images.count * images.count;
    const double omega = (images.count + 0.5) * 2 * pi * link.excitation.rate();
    const double decay = waveNumberOf(link.medium, omega / (2 * pi)).imag() * extent.nearest,
                 limit = extent.limit * exponential(decay);  // attenuation only grows
    images.rest = step / pi * sum * 2 / (3 * cubed) * limit;
    if (images.rest <= most || images.count == 100) return images;
  }
}

/// How many samples of the excitation a signal is repeated after, so that it does not overlap.
double stepsOfPeriod(const Link& link, double duration) {
  constexpr double most = 3e5;
  const double steps = std::ceil(duration * link.excitation.rate() * (1 + 1e-9));
  if (!(steps <= most))
    throw FieldError(
        "From the first wave to the last, the excitation's rate gives more than 3e5 samples. Give "
        "a lower rate, or points or pistons that are nearer.");
  return std::max(steps, 2.0);
}

/// V at n·2π·rate/steps for n = 1 … count.
std::vector<Complex> velocitySpectrum(const ExcitationSpline& excitation, double steps,
                                      double count) {
  std::vector<Complex> spectrum = spectrumOf(
      excitation.coefficients(), static_cast<std::size_t>(steps), static_cast<std::size_t>(count));
  for (std::size_t n = 0; n < spectrum.size(); ++n)
    spectrum[n] *= splineSpectrum(2 * pi * static_cast<double>(n + 1) / steps) / excitation.rate();
  return spectrum;
}

bool isAccepted(const Link& link, const Extent& extent, Complex k) {
  return std::all_of(link.apertures.begin(), link.apertures.end(), [&](const Aperture& aperture) {
    return aperture.accepts(k, extent.mostCoordinate);
  });
}

}  // namespace

Frequencies frequencies(const Link& link, const Extent& extent, const Band& band, double duration,
                        double most, const std::function<void(double)>& progress) {
  const double rate = link.excitation.rate(), steps = stepsOfPeriod(link, duration),
               step = 2 * pi * rate / steps;
  const bool hasImages = band.most() > pi * rate;
  const std::vector<Complex> spectrum = velocitySpectrum(
      link.excitation, steps, hasImages ? steps / 2 : std::min(band.most() / step, steps / 2));
  const Images images =
      hasImages ? imagesOf(link, extent, spectrum, steps, step, most / 8) : Images{0, 0};

  Frequencies result{{}, images.rest};
  std::vector<std::pair<double, Frequency>> sorted;  // by what they may contribute
  double refused = 0;
  // So many are not even worth being sorted.
  const double negligible = most / 100 / (2 * steps * (images.count + 1.0));
  for (int image = 0; image <= images.count; ++image)
    for (const int sign : {1, -1}) {
      if (progress) progress(0);
      for (std::size_t n = 0; n < spectrum.size(); ++n) {
        const double base = static_cast<double>(n + 1), index = image * steps + sign * base;
        if (index <= 0 || (sign < 0 && 2 * base == steps)) continue;
        const double ratio = base / index, omega = step * index;
        Frequency one{omega, waveNumberOf(link.medium, omega / (2 * pi)),
                      (sign > 0 ? spectrum[n] : std::conj(spectrum[n])) *
                          (ratio * ratio * ratio * ratio * band.weight(omega) * step / pi)};
        const double contribution = std::abs(one.factor) * mostOf(link, extent, one.k);
        for (std::size_t m = 0; m < link.apertures.size(); ++m) one.factor *= Complex(0, 1);
        if (contribution < negligible)
          result.rest += contribution;
        else if (isAccepted(link, extent, one.k))
          sorted.emplace_back(contribution, one);
        else
          refused += contribution;
      }
    }
  result.rest += refused;
  if (result.rest > most / 2)
    throw FieldError(
        "The excitation has frequencies at which the field cannot be computed: the attenuation "
        "must be at most the real part of k, sides must be 0 or from 1e-9 to 1e6 wavelengths, and "
        "points and centres within 1e9 wavelengths of the origin. Give lengths and times in the "
        "units of the speed, a smoother excitation, or a larger tolerance.");
  std::sort(sorted.begin(), sorted.end(),
            [](const auto& one, const auto& other) { return one.first < other.first; });
  auto first = sorted.begin();
  for (; first != sorted.end() && result.rest + first->first <= most; ++first)
    result.rest += first->first;
  for (; first != sorted.end(); ++first) result.kept.push_back(first->second);
  std::sort(result.kept.begin(), result.kept.end(),
            [](const Frequency& one, const Frequency& other) { return one.omega < other.omega; });
  return result;
}

double mostExpected(const Link& link, const Extent& extent) {
  const double count =
      std::max(2 * static_cast<double>(link.excitation.coefficients().size()), 256.0);
  const double step = pi * link.excitation.rate() / count;
  const std::vector<Complex> spectrum = velocitySpectrum(link.excitation, 2 * count, count);
  double sum = 0;
  for (std::size_t n = 0; n < spectrum.size(); ++n) {
    const double omega = step * static_cast<double>(n + 1);
    sum +=
        std::abs(spectrum[n]) * mostOf(link, extent, waveNumberOf(link.medium, omega / (2 * pi)));
  }
  return step / pi * sum;
}

}  // namespace pistonfield
