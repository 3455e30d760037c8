#include "field/Checks.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <string>

#include "field/Vectors.h"

namespace pistonfield {
namespace {

bool isRotation(const std::array<Position, 3>& axes) {
  if (!finite(axes[0]) || !finite(axes[1]) || !finite(axes[2])) return false;
  const auto [x, y, z] = axes;
  const Position cross = {x[1] * y[2] - x[2] * y[1], x[2] * y[0] - x[0] * y[2],
                          x[0] * y[1] - x[1] * y[0]};
  const auto isNear = [](double value, double wanted) { return std::fabs(value - wanted) < 3e-6; };
  return isNear(dot(x, x), 1) && isNear(dot(y, y), 1) && isNear(dot(x, y), 0) &&
         isNear(dot(z, z), 1) && isNear(dot(cross, z), 1);
}

/// So that squares of small and of large lengths are numbers.
constexpr double leastWaveNumber = 1e-99, mostWaveNumber = 1e99;

/// Shorter sides cannot be told from 0; longer ones take too long.
constexpr double leastSide = 1e-9, mostSide = 1e6;  // in wavelengths

}  // namespace

std::array<Position, 3> orthonormal(const std::array<Position, 3>& axes) {
  auto [x, y, z] = axes;
  const double length = std::sqrt(dot(x, x));
  for (double& component : x) component /= length;
  const double along = dot(x, y);
  for (std::size_t n = 0; n < 3; ++n) y[n] -= along * x[n];
  const double rest = std::sqrt(dot(y, y));
  for (double& component : y) component /= rest;
  return {x, y, {x[1] * y[2] - x[2] * y[1], x[2] * y[0] - x[0] * y[2], x[0] * y[1] - x[1] * y[0]}};
}

void check(const Field::Piston& piston, std::size_t index) {
  const std::string name = "Piston " + std::to_string(index);
  if (!(std::isfinite(piston.width) && std::isfinite(piston.height) && piston.width >= 0 &&
        piston.height >= 0))
    throw FieldError(name + ": width and height must be finite and at least 0.");
  if (!finite(piston.centre)) throw FieldError(name + ": its centre must be finite.");
  if (!isRotation(piston.axes))
    throw FieldError(name + ": its axes must be unit vectors at right angles, right-handed.");
  if (!std::isfinite(piston.weight.real()) || !std::isfinite(piston.weight.imag()))
    throw FieldError(name + ": its weight must be finite.");
}

bool isWaveNumber(std::complex<double> k) {
  return k.real() >= leastWaveNumber && k.real() <= mostWaveNumber && k.imag() <= 0 &&
         -k.imag() <= k.real();
}

bool isSide(double wavelengths) { return wavelengths >= leastSide && wavelengths <= mostSide; }

void checkWaveNumber(std::complex<double> k) {
  const double real = std::fabs(k.real()), attenuation = -k.imag();
  if (!std::isfinite(real) || !std::isfinite(attenuation))
    throw FieldError("k must be a finite number.");
  if (real != 0 && !(real >= leastWaveNumber && real <= mostWaveNumber))
    throw FieldError(
        "k must be 0, or from 1e-99 to 1e99 in magnitude. Give lengths and 1/k in another unit.");
  if (attenuation < 0)
    throw FieldError(
        "k has a positive imaginary part: waves would grow. With the attenuation alpha, pass "
        "k - i*alpha.");
  if (attenuation > real)
    throw FieldError(
        "The attenuation must be at most the real part of k: 8.7 dB in 1/6 of a wavelength. Give "
        "both in one unit.");
}

void checkScale(const Field::Piston& piston, double wavelengths, std::size_t index,
                const char* other) {
  const std::string name = "Piston " + std::to_string(index);
  for (const double side : {piston.width * wavelengths, piston.height * wavelengths})
    if (side != 0 && !isSide(side))
      throw FieldError(name +
                       ": its sides must be 0 or from 1e-9 to 1e6 wavelengths. Give lengths and " +
                       other + " in one unit.");
  for (const double coordinate : piston.centre)
    if (!(std::fabs(coordinate) * wavelengths <= mostWavelengths))
      throw FieldError(name +
                       ": its centre is farther than 1e9 wavelengths from the origin. Give lengths "
                       "and " +
                       other + " in one unit.");
}

void checkTolerance(double tolerance) {
  if (!(tolerance >= 1e-12 && tolerance < 1))
    throw FieldError("The tolerance must be from 1e-12 to below 1.");
}

std::string inDigits(double tolerance) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%.1e", tolerance);
  return text.data();
}

void refuseTolerance(double kept) {
  if (kept < 0.5)
    throw FieldError(
        "Double precision cannot keep the tolerance at these points. Ask for at least " +
        inDigits(kept) + ", or for points nearer to the pistons.");
  throw FieldError(
      "Double precision cannot keep any tolerance at these points: the pressures are too small, "
      "for pistons that cancel each other or points that are too far. Add points with larger "
      "pressures.");
}

bool isSilent(const Field::Piston& piston) {
  return piston.weight == 0.0 || piston.width == 0 || piston.height == 0;
}

}  // namespace pistonfield
