#include "field/pulse/ExcitationSpline.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace pistonfield {
namespace {

/// The cubic B-spline, at a distance x ≥ 0 from its middle.
double bSpline(double x) {
  if (x >= 2) return 0;
  if (x >= 1) return (2 - x) * (2 - x) * (2 - x) / 6;
  return 2.0 / 3 - x * x * (1 - x / 2);
}

/// The solution of (c_(n−1) + 4·c_n + c_(n+1))/6 = samples[n], with 0 beyond both ends.
std::vector<double> splineThrough(std::vector<double> samples) {
  std::vector<double> ratios(samples.size());
  double before = 0, ratio = 0;
  for (std::size_t n = 0; n < samples.size(); ++n) {
    const double pivot = 4 - ratio;
    ratio = ratios[n] = 1 / pivot;
    before = samples[n] = (6 * samples[n] - before) / pivot;
  }
  for (std::size_t n = samples.size(); n-- > 1;) samples[n - 1] -= ratios[n - 1] * samples[n];
  return samples;
}

}  // namespace

ExcitationSpline::ExcitationSpline(const Excitation& excitation)
    : start_(excitation.start), rate_(excitation.rate) {
  if (!(rate_ >= 1e-99 && rate_ <= 1e99))
    throw FieldError("The rate of the excitation must be positive, from 1e-99 to 1e99.");
  if (!std::isfinite(start_)) throw FieldError("The start of the excitation must be finite.");
  if (excitation.samples.empty()) throw FieldError("The excitation must have at least one sample.");
  for (const double sample : excitation.samples)
    if (!(std::fabs(sample) <= 1e100))
      throw FieldError("The samples of the excitation must be at most 1e100 in magnitude.");
  coefficients_ = splineThrough(excitation.samples);
}

double ExcitationSpline::at(double t) const {
  const double x = (t - start_) * rate_;
  if (!(x > -2 && x < static_cast<double>(coefficients_.size()) + 1)) return 0;
  const auto count = static_cast<std::ptrdiff_t>(coefficients_.size()),
             below = static_cast<std::ptrdiff_t>(std::floor(x));
  double v = 0;
  for (std::ptrdiff_t n = std::max<std::ptrdiff_t>(below - 1, 0); n < count && n <= below + 2; ++n)
    v +=
        coefficients_[static_cast<std::size_t>(n)] * bSpline(std::fabs(x - static_cast<double>(n)));
  return v;
}

std::complex<double> ExcitationSpline::spectrum(double omega) const {
  const double turn = omega / rate_, half = turn / 2;
  std::complex<double> sum = 0;
  for (std::size_t n = 0; n < coefficients_.size(); ++n) {
    const double angle = turn * static_cast<double>(n);
    sum += coefficients_[n] * std::complex<double>(std::cos(angle), -std::sin(angle));
  }
  const double sinc = half != 0 ? std::sin(half) / half : 1;
  return sum * (sinc * sinc * sinc * sinc / rate_);
}

}  // namespace pistonfield
