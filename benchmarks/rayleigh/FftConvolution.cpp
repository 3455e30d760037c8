#include "benchmarks/rayleigh/FftConvolution.h"

#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace rayleigh {
namespace {

constexpr double pi = 3.14159265358979323846;

/// The least size from `least` on that has no prime factor above 7.
int fastSize(int least) {
  for (int size = least;; ++size) {
    int rest = size;
    for (const int prime : {2, 3, 5, 7})
      while (rest % prime == 0) rest /= prime;
    if (rest == 1) return size;
  }
}

}  // namespace

struct FftConvolution::Transforms {
  Transforms(int x, int y)
      : nx(x),
        ny(y),
        size(static_cast<std::size_t>(x) * static_cast<std::size_t>(y)),
        values(static_cast<std::complex<float>*>(fftwf_malloc(size * sizeof *values))),
        source(size) {
    auto* const data = reinterpret_cast<fftwf_complex*>(values);
    forward = fftwf_plan_dft_2d(ny, nx, data, data, FFTW_FORWARD, FFTW_MEASURE);
    backward = fftwf_plan_dft_2d(ny, nx, data, data, FFTW_BACKWARD, FFTW_MEASURE);
  }
  Transforms(const Transforms&) = delete;
  Transforms& operator=(const Transforms&) = delete;
  ~Transforms() {
    fftwf_destroy_plan(backward);
    fftwf_destroy_plan(forward);
    fftwf_free(values);
  }

  std::complex<float>& at(int x, int y) const { return values[std::ptrdiff_t{y} * nx + x]; }

  int nx, ny;
  std::size_t size;
  std::complex<float>* values;
  std::vector<std::complex<float>> source;  // transformed, over the number of values
  fftwf_plan forward, backward;
};

FftConvolution::FftConvolution(double width, double height, double step, int reach)
    : step_(step),
      reach_(reach),
      cellsX_(static_cast<int>(std::lround(width / step))),
      cellsY_(static_cast<int>(std::lround(height / step))),
      cell_({{step, step}}, 2 * pi, false),
      transforms_(std::make_unique<Transforms>(fastSize(2 * reach + cellsX_),
                                               fastSize(2 * reach + cellsY_))) {
  cell_.useOrder(2);
  Transforms& t = *transforms_;
  std::fill_n(t.values, t.size, 0.0f);
  for (int y = 0; y < cellsY_; ++y)
    for (int x = 0; x < cellsX_; ++x) t.at(x, y) = 1 / static_cast<float>(t.size);
  fftwf_execute(t.forward);
  std::copy_n(t.values, t.size, t.source.begin());
}

FftConvolution::~FftConvolution() = default;

void FftConvolution::plane(double z, std::complex<float>* pressures) {
  // A cell's field in a quarter of the plane.
  const int quarterX = reach_ + cellsX_ / 2, quarterY = reach_ + cellsY_ / 2;
  std::vector<pistonfield::Position> offsets;
  for (int y = 0; y < quarterY; ++y)
    for (int x = 0; x < quarterX; ++x) offsets.push_back({(x + 0.5) * step_, (y + 0.5) * step_, z});
  const std::vector<std::complex<float>> quarter = cell_.at(Points(offsets, 2 * pi));

  // At index i − j, the field of cell j at point i.
  Transforms& t = *transforms_;
  std::fill_n(t.values, t.size, 0.0f);
  for (int n = 1 - cellsY_; n <= 2 * reach_; ++n) {
    const int y = std::abs(2 * (n - reach_) + cellsY_ - 1) / 2;
    for (int m = 1 - cellsX_; m <= 2 * reach_; ++m) {
      const int x = std::abs(2 * (m - reach_) + cellsX_ - 1) / 2;
      t.at(m < 0 ? m + t.nx : m, n < 0 ? n + t.ny : n) =
          *(quarter.begin() + std::ptrdiff_t{y} * quarterX + x);
    }
  }
  fftwf_execute(t.forward);
  for (std::size_t n = 0; n < t.size; ++n) {
    const std::complex<float> p = t.values[n], q = t.source[n];
    t.values[n] = {p.real() * q.real() - p.imag() * q.imag(),
                   p.real() * q.imag() + p.imag() * q.real()};
  }
  fftwf_execute(t.backward);
  for (int y = 0; y <= 2 * reach_; ++y)
    pressures = std::copy_n(&t.at(0, y), 2 * reach_ + 1, pressures);
}

}  // namespace rayleigh
