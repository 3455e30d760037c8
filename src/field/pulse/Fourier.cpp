#include "field/pulse/Fourier.h"

#include <cmath>
#include <cstdint>
#include <utility>

namespace pistonfield {
namespace {

using Complex = std::complex<double>;

constexpr double pi = 3.14159265358979323846;

/// Without the library's care for infinities.
Complex product(Complex one, Complex other) {
  return {one.real() * other.real() - one.imag() * other.imag(),
          one.real() * other.imag() + one.imag() * other.real()};
}

}  // namespace

void transform(std::vector<Complex>& values, int sign) {
  const std::size_t size = values.size();
  for (std::size_t n = 1, reversed = 0; n < size; ++n) {
    std::size_t bit = size / 2;
    for (; reversed & bit; bit /= 2) reversed ^= bit;
    reversed |= bit;
    if (n < reversed) std::swap(values[n], values[reversed]);
  }
  std::vector<Complex> turns(size / 2);
  for (std::size_t n = 0; n < turns.size(); ++n) {
    const double angle = 2 * pi * static_cast<double>(n) / static_cast<double>(size);
    turns[n] = {std::cos(angle), sign * std::sin(angle)};
  }
  for (std::size_t half = 1; half < size; half *= 2)
    for (std::size_t first = 0; first < size; first += 2 * half)
      for (std::size_t n = 0; n < half; ++n) {
        Complex &one = values[first + n], &other = values[first + n + half];
        const Complex turned = product(other, turns[n * (size / 2 / half)]);
        other = one - turned;
        one += turned;
      }
}

std::vector<Complex> spectrumOf(const std::vector<double>& samples, std::size_t steps,
                                std::size_t count) {
  // With 2nm = n² + m² − (n − m)², the sum is a convolution with a chirp.
  const std::uint64_t period = 2 * static_cast<std::uint64_t>(steps);
  const auto chirp = [&](std::uint64_t n) {  // exp(iπn²/steps)
    const double angle = pi * static_cast<double>(n * n % period) / static_cast<double>(steps);
    return Complex(std::cos(angle), std::sin(angle));
  };
  std::size_t size = 1;
  while (size < samples.size() + count + 1) size *= 2;
  std::vector<Complex> values(size), chirps(size);
  for (std::size_t m = 0; m < samples.size(); ++m) {
    values[m] = samples[m] * std::conj(chirp(m));
    chirps[(size - m) % size] = chirp(m);
  }
  for (std::size_t n = 0; n <= count; ++n) chirps[n] = chirp(n);
  transform(values, -1);
  transform(chirps, -1);
  for (std::size_t n = 0; n < size; ++n) values[n] = product(values[n], chirps[n]);
  transform(values, 1);
  std::vector<Complex> spectrum(count);
  for (std::size_t n = 1; n <= count; ++n)
    spectrum[n - 1] = product(values[n], std::conj(chirp(n))) / static_cast<double>(size);
  return spectrum;
}

double splineSpectrum(double omega) {
  const double half = omega / 2, sinc = half != 0 ? std::sin(half) / half : 1;
  return sinc * sinc * sinc * sinc;
}

}  // namespace pistonfield
