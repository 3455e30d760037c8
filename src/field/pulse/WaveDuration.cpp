#include "field/pulse/WaveDuration.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <utility>
#include <vector>

#include "field/Powers.h"
#include "field/WaveNumber.h"
#include "field/pulse/Fourier.h"

namespace pistonfield {
namespace {

using Complex = std::complex<double>;

constexpr double pi = 3.14159265358979323846;

/// What a path makes of a frequency of the velocity, but for the delay path/speed.
Complex transfer(const Link& link, double omega, double path) {
  const Complex K = waveNumberOf(link.medium, omega / (2 * pi));
  if (!(K.real() > 0)) return 0;
  const double turn = (omega / link.medium.speed - K.real()) * path;
  Complex factor = exponential(K.imag() * path) * Complex(std::cos(turn), std::sin(turn));
  for (std::size_t n = 0; n < link.apertures.size(); ++n) factor *= Complex(0, 1) * K;
  return factor;
}

/// Waves after some paths, sampled over a time at the excitation's rate.
class SampledWaves {
 public:
  /// `size` is a power of 2.
  SampledWaves(const Link& link, const Extent& extent, const Band& band, std::size_t size,
               const std::function<void(double)>& progress)
      : middle_(link.excitation.coefficients().size() / 2), envelope_(size) {
    constexpr int paths = 5;
    std::vector<Complex> spectrum(size);
    std::copy(link.excitation.coefficients().begin(), link.excitation.coefficients().end(),
              spectrum.begin());
    transform(spectrum, -1);
    for (int n = 0; n < paths; ++n) {
      if (progress) progress(0);
      const double part = n / (paths - 1.0),
                   path = extent.nearest + part * part * (extent.farthest - extent.nearest);
      add(link, band, spectrum, path);
    }
    before_ = after_ = envelope_;
    for (std::size_t n = 1; n < size; ++n) {
      before_[n] = std::max(before_[n], before_[n - 1]);
      after_[size - 1 - n] = std::max(after_[size - 1 - n], after_[size - n]);
    }
  }

  /// The largest wave before, or after, so many steps from the excitation's middle.
  double before(double steps) const { return beyond(before_, -1, -steps); }
  double after(double steps) const { return beyond(after_, 1, steps); }

  /// The largest.
  double largest() const { return after_.front(); }

  /// The first and the last steps at which a wave is above a limit.
  std::pair<double, double> above(double limit) const {
    const auto isAbove = [&](double wave) { return wave > limit; };
    const double half = static_cast<double>(envelope_.size()) / 2;
    const auto first = std::find_if(before_.begin(), before_.end(), isAbove);
    const auto last = std::find_if(after_.rbegin(), after_.rend(), isAbove);
    return {static_cast<double>(first - before_.begin()) - half,
            static_cast<double>(after_.rend() - last) - 1 - half};
  }

 private:
  void add(const Link& link, const Band& band, const std::vector<Complex>& spectrum, double path) {
    const std::size_t size = envelope_.size();
    const double rate = link.excitation.rate(), step = 2 * pi * rate / static_cast<double>(size);
    std::vector<Complex> wave(size);
    for (std::size_t m = 1; m <= size / 2; ++m) {
      // Those frequencies that samples cannot tell from this one belong to the samples, too.
      for (int image = -3; image <= 3; ++image) {
        const double omega = step * static_cast<double>(m) + 2 * pi * rate * image;
        const double part = splineSpectrum(omega / rate) * band.weight(std::fabs(omega));
        if (part < 1e-14) continue;
        const Complex factor = transfer(link, std::fabs(omega), path);
        wave[m] += part * (omega > 0 ? factor : std::conj(factor));
      }
      wave[m] *= spectrum[m] / static_cast<double>(size);
      if (m < size / 2) wave[size - m] = std::conj(wave[m]);
    }
    transform(wave, 1);
    for (std::size_t n = 0; n < size; ++n) {
      const std::size_t at = (n + middle_ + size / 2) % size;  // the middle of the envelope is
      envelope_[n] = std::max(envelope_[n], std::fabs(wave[at].real()));  // the excitation's
    }
  }

  /// A tail, continued with a power of the time where the samples' own repetition matters.
  double beyond(const std::vector<double>& tails, int direction, double distance) const {
    const double half = static_cast<double>(envelope_.size()) / 2, most = 0.75 * half,
                 outside = std::max(distance / most, 1.0);
    const double index = std::floor(half + direction * std::clamp(distance, 0.0, most));
    return tails[static_cast<std::size_t>(index)] / (outside * std::sqrt(outside));
  }

  std::size_t middle_;
  std::vector<double> envelope_, before_, after_;
};

/// How many steps the speed of the excitation's frequencies differs from that of the medium.
double stepsOfDispersion(const Link& link, double path) {
  if (link.medium.reference == 0) return 0;
  const double rate = link.excitation.rate();
  constexpr std::size_t count = 512;
  const std::vector<Complex> spectrum =
      spectrumOf(link.excitation.coefficients(), 2 * count, count);
  std::vector<double> magnitudes(count), delays(count);
  double largest = 0;
  for (std::size_t n = 0; n < count; ++n) {
    const double omega = pi * rate * static_cast<double>(n + 1) / count, step = omega / 1000;
    const auto late = [&](double at) {
      return waveNumberOf(link.medium, at / (2 * pi)).real() - at / link.medium.speed;
    };
    magnitudes[n] = std::abs(spectrum[n]) * splineSpectrum(omega / rate);
    delays[n] = std::fabs(late(omega + step) - late(omega)) / step * path * rate;
    largest = std::max(largest, magnitudes[n]);
  }
  double most = 0;
  for (std::size_t n = 0; n < count; ++n)
    if (magnitudes[n] > 1e-3 * largest) most = std::max(most, delays[n]);
  return most;
}

}  // namespace

WaveDuration waveDuration(const Link& link, const Extent& extent, const Band& band, double most,
                          const std::function<void(double)>& progress) {
  const ExcitationSpline& excitation = link.excitation;
  const double rate = excitation.rate();
  if (!link.isLossy()) return {excitation.begin(), excitation.end(), 0};

  constexpr std::size_t mostSize = std::size_t{1} << 20;
  const auto samples = excitation.coefficients().size();
  const double least =
      8 * (static_cast<double>(samples) + 16 + stepsOfDispersion(link, extent.farthest));
  if (!(least <= static_cast<double>(mostSize)))
    throw FieldError(
        "The pulse lasts too long: 100 000 samples at most in a medium that attenuates. Give fewer "
        "samples, a lower rate, or a medium with less dispersion.");
  std::size_t size = 256;
  while (static_cast<double>(size) < least) size *= 2;

  const double ownFirst = -static_cast<double>(samples) / 2 - 3, spread = extent.duration * rate;
  for (;; size *= 2) {
    const SampledWaves waves(link, extent, band, size, progress);
    const double quarter = static_cast<double>(size) / 4;
    double limit = most / 2;
    for (;; limit /= 2) {
      const auto [above, last] = waves.above(limit);
      const double first = std::min(above - 2, ownFirst), end = std::max(last + 2, -ownFirst);
      const double period = spread + end - first;
      const bool isTooLong = first < -quarter || end > quarter;
      // Below that there is nothing but rounding errors.
      const bool isLast = limit < 1e-14 * waves.largest() || (isTooLong && size == mostSize);
      if (isTooLong && !isLast) break;
      // What the repetitions of a signal before and after it bring, and what follows them.
      double rest = 0, distance = 0;
      for (int n = 0; n < 64; ++n, distance += period)
        rest += waves.before(first - 1 - distance) + waves.after(end + 1 + distance);
      rest += 2 * 64 * (waves.before(first - distance) + waves.after(end + distance));
      rest *= 2;  // for paths between those of the samples
      const double middle = std::floor(static_cast<double>(samples) / 2);
      if (isLast || rest <= most)
        return {excitation.start() + (middle + first) / rate,
                excitation.start() + (middle + end) / rate, rest};
    }
  }
}

}  // namespace pistonfield
