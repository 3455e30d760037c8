#include "field/pulse/TimeSum.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pistonfield {
namespace {

using Complex = std::complex<double>;

Complex turn(double angle) { return {std::cos(angle), std::sin(angle)}; }

/// Without the library's care for infinities.
Complex product(Complex one, Complex other) {
  return {one.real() * other.real() - one.imag() * other.imag(),
          one.real() * other.imag() + one.imag() * other.real()};
}

}  // namespace

TimeSum::TimeSum(const std::vector<double>& omegas, double step, std::size_t most)
    : omegas_(omegas), block_(std::min(most, mostInBlock)) {
  re_.reserve(omegas.size() * block_);
  im_.reserve(omegas.size() * block_);
  next_.reserve(omegas.size());
  for (const double omega : omegas) {
    for (std::size_t m = 0; m < block_; ++m) {
      const Complex value = turn(omega * (static_cast<double>(m) * step));
      re_.push_back(value.real());
      im_.push_back(value.imag());
    }
    next_.push_back(turn(omega * (static_cast<double>(block_) * step)));
  }
}

void TimeSum::add(std::vector<Complex> coefficients, double start, std::size_t count,
                  double* sums) const {
  for (std::size_t n = 0; n < coefficients.size(); ++n)
    coefficients[n] = product(coefficients[n], turn(omegas_[n] * start));
  for (std::size_t first = 0; first < count; first += block_) {
    std::array<double, mostInBlock> sum{};
    for (std::size_t n = 0; n < coefficients.size(); ++n) {
      const double re = coefficients[n].real(), im = coefficients[n].imag();
      const double* tableRe = &re_[n * block_];
      const double* tableIm = &im_[n * block_];
      for (std::size_t m = 0; m < block_; ++m) sum[m] += re * tableRe[m] - im * tableIm[m];
      coefficients[n] = product(coefficients[n], next_[n]);
    }
    for (std::size_t m = 0; m < std::min(block_, count - first); ++m) sums[first + m] += sum[m];
  }
}

}  // namespace pistonfield
