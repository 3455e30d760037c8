#include "field/pulse/PulseSpectrum.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846;

/// Cells from ω = 0 to half the rate, in each of which the spectrum is summed.
constexpr std::size_t cells = 512;

/// Longer excitations are divided: the bound of a sum is the sum of bounds.
constexpr std::size_t mostTogether = 1 << 14;

/// Samples of a spectrum of which there are four times as many as in time: their sum is at least
/// 0.93 of the integral of its magnitude.
constexpr std::size_t oversampling = 4;
constexpr double margin = 1.1;

/// In place; the length is a power of 2.
void transform(std::vector<std::complex<double>>& values) {
  const std::size_t n = values.size();
  for (std::size_t i = 1, j = 0; i < n; ++i) {
    std::size_t bit = n / 2;
    for (; (j & bit) != 0; bit /= 2) j ^= bit;
    j ^= bit;
    if (i < j) std::swap(values[i], values[j]);
  }
  std::vector<std::complex<double>> turns(n / 2);
  for (std::size_t i = 0; i < n / 2; ++i) {
    const double angle = 2 * pi * static_cast<double>(i) / static_cast<double>(n);
    turns[i] = {std::cos(angle), -std::sin(angle)};
  }
  for (std::size_t half = 1; half < n; half *= 2)
    for (std::size_t first = 0; first < n; first += 2 * half)
      for (std::size_t i = first; i < first + half; ++i) {
        const std::complex<double> turn = turns[(i - first) * (n / 2 / half)], b = values[i + half];
        const std::complex<double> product(turn.real() * b.real() - turn.imag() * b.imag(),
                                           turn.real() * b.imag() + turn.imag() * b.real());
        values[i + half] = values[i] - product;
        values[i] += product;
      }
}

/// What the coefficients' own periodic spectrum C has in each cell.
struct CellSums {
  std::array<double, cells> mass{};  ///< 1/π ∫|C| dω/rate
  std::array<double, cells> energy{};
};

CellSums cellSums(const std::vector<double>& coefficients) {
  CellSums sums;
  const std::size_t together = std::min(coefficients.size(), mostTogether);
  std::size_t length = 4 * cells;
  while (length < oversampling * together) length *= 2;
  for (std::size_t first = 0; first < coefficients.size(); first += together) {
    std::vector<std::complex<double>> values(length);
    const std::size_t count = std::min(together, coefficients.size() - first);
    std::copy_n(coefficients.begin() + static_cast<std::ptrdiff_t>(first), count, values.begin());
    transform(values);
    for (std::size_t i = 0; i <= length / 2; ++i) {
      const std::size_t cell = std::min(i / (length / 2 / cells), cells - 1);
      const double magnitude = std::abs(values[i]) / static_cast<double>(length);
      sums.mass[cell] += 2 * margin * magnitude;
      sums.energy[cell] += magnitude * magnitude;
    }
  }
  return sums;
}

double fourth(double x) { return x * x * x * x; }

/// Parts of the spectrum, of which there are 32 in each octave.
class Octaves {
 public:
  explicit Octaves(double least) : least_(least) {}

  void add(double omega, double mass) {
    int exponent = 0;
    const double mantissa = std::frexp(std::max(omega / least_, 1.0), &exponent);
    const auto index = static_cast<std::size_t>(32 * (exponent - 1)) +
                       std::min<std::size_t>(31, static_cast<std::size_t>(64 * mantissa - 32));
    if (index >= masses_.size()) masses_.resize(index + 1);
    masses_[index] += mass;
  }

  std::vector<PulseSpectrum::Part> parts() const {
    std::vector<PulseSpectrum::Part> parts;
    for (std::size_t n = 0; n < masses_.size(); ++n) {
      const double end =
          least_ * std::ldexp(1 + static_cast<double>(n % 32 + 1) / 32, static_cast<int>(n / 32));
      if (masses_[n] > 0) parts.push_back({end, masses_[n], masses_[n] * end});
    }
    return parts;
  }

 private:
  double least_;
  std::vector<double> masses_;
};

}  // namespace

PulseSpectrum::PulseSpectrum(const ExcitationSpline& spline) {
  const CellSums sums = cellSums(spline.coefficients());
  const double rate = spline.rate();
  // An image of a cell has the factor (sin(x)/y)⁴, x and y being half of ω/rate in the cell and in
  // the image.
  constexpr int imagesApart = 16, octavesTogether = 22;
  constexpr double width = pi / 2 / cells;
  Octaves octaves(pi * rate / cells);
  double allImages = 0, energy = 0;
  for (std::size_t cell = 0; cell < cells; ++cell) {
    const double mass = sums.mass[cell];
    if (mass == 0) continue;
    const double from = static_cast<double>(cell) * width, to = from + width,
                 sine = fourth(std::sin(to)), sinc = from > 0 ? std::sin(from) / from : 1;
    octaves.add(2 * rate * to, mass * fourth(sinc));
    energy += sums.energy[cell] * fourth(sinc) * fourth(sinc);
    centre_ += sums.energy[cell] * fourth(sinc) * fourth(sinc) * rate * (from + to);
    for (int n = 1; n <= imagesApart; ++n) {
      octaves.add(2 * rate * (n * pi - from), mass * sine / fourth(n * pi - to));
      octaves.add(2 * rate * (n * pi + to), mass * sine / fourth(n * pi + from));
    }
    allImages += 2 * mass * sine;
  }
  centre_ = energy > 0 ? centre_ / energy : 0;
  double first = imagesApart * pi;  // the images from n = imagesApart on, of both signs
  for (int octave = 0; octave < octavesTogether; ++octave, first *= 2)
    octaves.add(2 * rate * (2 * first + pi), 1.15 * allImages * (first / pi) / fourth(first));
  parts_ = octaves.parts();
  // The rest: the sum over n ≥ N of 1/(πn)⁴ is below N/(πN)⁴, and that of 1/(πn)³ below N/(πN)³.
  const double rest = 1.15 * allImages * (first / pi) / fourth(first);
  parts_.push_back({std::numeric_limits<double>::infinity(), rest, 4 * rate * first * rest});
  for (const Part& part : parts_) {
    mass_ += part.mass;
    slope_ += part.slope;
  }
}

}  // namespace pistonfield
