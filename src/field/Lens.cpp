#include <algorithm>
#include <cmath>
#include <complex>

#include "field/Checks.h"
#include "field/Vectors.h"
#include "field/lens.h"

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846, mostStrips = 1e6;

void checkFocus(double focus) {
  if (!std::isfinite(focus) || focus == 0)
    throw FieldError("focus must be a finite real number that is not 0.");
}

void throwTooMany() {
  throw FieldError(
      "tolerance must be larger, or the pistons fewer or smaller: the lens would need more than "
      "1e6 strips.");
}

/// How much longer the way to the focus is from the height y than from the middle, without the
/// cancellation of √(F² + y²) − |F|.
double longerPath(double y, double focus) {
  return std::copysign(y * (y / (hypotenuse(focus, y) + std::fabs(focus))), focus);
}

}  // namespace

std::size_t lensStrips(double height, double focus, std::complex<double> k, double tolerance) {
  if (!(height >= 0) || !std::isfinite(height))
    throw FieldError("height must be a finite real number, at least 0.");
  checkFocus(focus);
  checkWaveNumber(k);
  checkTolerance(tolerance);
  const double q = std::fabs(k.real()) * height;
  if (q == 0) return 1;
  const double sine = height / 2 / hypotenuse(focus, height / 2),
               // Steps that are longer than half a wavelength radiate as a grating does. The error
               // of shorter ones is of second order in their height, with three parts: the slope of
               // the phase times that of waves along the face, the same times itself, and the
               // difference between the phase in the middle of a strip and its mean.
      smooth = std::max(1 / pi, std::sqrt(sine * (1 + sine + 4 / q) / (40 * tolerance)));
  const double count = std::ceil(q * std::min(sine / (2 * tolerance), smooth));
  if (!(count <= mostStrips)) throwTooMany();
  return count > 1 ? static_cast<std::size_t>(count) : 1;
}

std::vector<LensStrip> lensStripsOf(const Field::Piston& piston, double focus, std::size_t count) {
  check(piston, 0);
  checkFocus(focus);
  if (count < 1 || static_cast<double>(count) > mostStrips)
    throw FieldError("count must be an integer from 1 to 1e6.");
  std::vector<LensStrip> strips(count, {piston});
  const double height = piston.height / static_cast<double>(count);
  for (std::size_t n = 0; n < count; ++n) {
    const double y = (static_cast<double>(n) - static_cast<double>(count - 1) / 2) * height;
    strips[n].path = longerPath(y, focus);
    strips[n].piston.height = height;
    for (std::size_t axis = 0; axis < 3; ++axis)
      strips[n].piston.centre[axis] += y * piston.axes[1][axis];
  }
  return strips;
}

std::vector<Field::Piston> lensed(const std::vector<Field::Piston>& pistons, double focus,
                                  std::complex<double> k, double tolerance) {
  checkFocus(focus);
  checkWaveNumber(k);
  checkTolerance(tolerance);
  std::vector<Field::Piston> result;
  for (std::size_t m = 0; m < pistons.size(); ++m) {
    check(pistons[m], m);
    const std::size_t count = lensStrips(pistons[m].height, focus, k, tolerance);
    if (static_cast<double>(result.size() + count) > mostStrips) throwTooMany();
    for (LensStrip& strip : lensStripsOf(pistons[m], focus, count)) {
      strip.piston.weight *= std::polar(1.0, k.real() * strip.path);
      result.push_back(strip.piston);
    }
  }
  return result;
}

}  // namespace pistonfield
