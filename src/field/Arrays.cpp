#include <algorithm>
#include <cmath>
#include <complex>
#include <utility>

#include "field/Vectors.h"
#include "field/Windows.h"
#include "field/arrays.h"

namespace pistonfield {
namespace {

using Piston = Field::Piston;

constexpr double pi = 3.14159265358979323846;

/// Allows for the rounding of numbers in single precision.
constexpr double slack = 1 + 1e-6;

bool isCount(std::size_t nx, std::size_t ny) {
  constexpr std::size_t most = 1'000'000;
  return nx >= 1 && ny >= 1 && nx <= most && ny <= most / nx;
}

void checkFinite(const char* argument, double value) {
  if (!std::isfinite(value))
    throw FieldError(std::string(argument) + " must be a finite real number.");
}

void checkFinite(const char* argument, const Position& point) {
  if (!std::isfinite(point[0]) || !std::isfinite(point[1]) || !std::isfinite(point[2]))
    throw FieldError(std::string(argument) + " must be three finite real numbers.");
}

void checkLength(const char* argument, double value) {
  checkFinite(argument, value);
  if (!(value > 0)) throw FieldError(std::string(argument) + " must be positive.");
}

void checkSide(const char* argument, double side, std::size_t count, double pitch) {
  checkLength(argument, side);
  if (count > 1 && side > pitch * slack)
    throw FieldError(std::string(argument) +
                     " must be at most the pitch in its direction: elements must not overlap.");
}

/// Twice the distance of an element from the middle of `count`, in pitches.
double twiceFromMiddle(std::size_t index, std::size_t count) {
  return 2 * static_cast<double>(index) - static_cast<double>(count - 1);
}

/// The elements in rows and columns. Checks their sides only.
std::vector<Piston> flatArray(const std::array<std::size_t, 2>& counts,
                              const std::array<double, 2>& pitches, double width, double height) {
  checkSide("height", height, counts[1], pitches[1]);
  checkSide("width", width, counts[0], pitches[0]);
  Piston element;
  element.width = width;
  element.height = height;
  std::vector<Piston> array(counts[0] * counts[1], element);
  for (std::size_t n = 0; n < array.size(); ++n) {
    array[n].centre[0] = twiceFromMiddle(n % counts[0], counts[0]) / 2 * pitches[0];
    array[n].centre[1] = twiceFromMiddle(n / counts[0], counts[1]) / 2 * pitches[1];
  }
  return array;
}

std::vector<Piston> row(std::size_t count, double pitch, double width, double height) {
  return flatArray({count, 1}, {pitch, pitch}, width, height);
}

void checkRow(std::size_t count, double pitch) {
  if (!isCount(count, 1)) throw FieldError("count must be an integer from 1 to 1e6.");
  checkLength("pitch", pitch);
}

double squared(double x) { return x * x; }

/// Multiplies the weights by exp(ikL), with the real part of k and the length L of each centre.
template <class Length>
std::vector<Piston> shifted(std::vector<Piston> pistons, std::complex<double> k,
                            const Length& lengthOf) {
  if (!std::isfinite(k.real()) || !std::isfinite(k.imag()))
    throw FieldError("k must be a finite number.");
  for (Piston& piston : pistons)
    piston.weight *= std::polar(1.0, k.real() * lengthOf(piston.centre));
  return pistons;
}

}  // namespace

std::vector<Piston> linearArray(std::size_t count, double pitch, double width, double height) {
  checkRow(count, pitch);
  return row(count, pitch, width, height);
}

std::vector<Piston> matrixArray(const std::array<std::size_t, 2>& counts,
                                const std::array<double, 2>& pitches, double width, double height) {
  if (!isCount(counts[0], counts[1]))
    throw FieldError(
        "counts must be two integers from 1, along x and along y, with a product of at most 1e6.");
  for (const double pitch : pitches) checkLength("pitches", pitch);
  return flatArray(counts, pitches, width, height);
}

std::vector<Piston> convexArray(std::size_t count, double pitch, double radius, double width,
                                double height) {
  checkRow(count, pitch);
  checkFinite("radius", radius);
  if (static_cast<double>(count) * pitch > 2 * pi * std::fabs(radius) * slack)
    throw FieldError(
        "radius must be at least count * pitch / (2 pi) in magnitude: the elements must fit on the "
        "circle.");
  std::vector<Piston> array = row(count, pitch, width, height);
  for (Piston& piston : array) {
    const double a = piston.centre[0] / radius, sine = std::sin(a), cosine = std::cos(a);
    piston.centre = {radius * sine, 0, -2 * radius * squared(std::sin(a / 2))};
    piston.axes = {{{cosine, 0, -sine}, {0, 1, 0}, {sine, 0, cosine}}};
  }
  return array;
}

std::vector<double> apodization(const std::string& name, const std::vector<std::size_t>& counts,
                                std::optional<double> parameter) {
  const Window window(name, parameter);
  if (counts.empty() || counts.size() > 2 ||
      !isCount(counts[0], counts.size() == 2 ? counts[1] : 1))
    throw FieldError(
        "counts must be one integer from 1, or two, along x and along y, with a product of at most "
        "1e6.");
  std::vector<double> weights = {1};
  for (const std::size_t count : counts) {
    std::vector<double> products;
    for (std::size_t n = 0; n < count; ++n) {
      const double u = twiceFromMiddle(n, count) / static_cast<double>(count);
      const double factor = window.at(u);
      for (const double weight : weights) products.push_back(weight * factor);
    }
    weights = std::move(products);
  }
  return weights;
}

std::vector<Piston> weighted(std::vector<Piston> pistons, const std::vector<double>& weights) {
  if (weights.size() != pistons.size())
    throw FieldError("weights must be one number for each piston.");
  for (std::size_t n = 0; n < pistons.size(); ++n) pistons[n].weight *= weights[n];
  return pistons;
}

std::vector<Piston> steered(std::vector<Piston> pistons, const Position& direction,
                            std::complex<double> k) {
  checkFinite("direction", direction);
  const double largest =
      std::max({std::fabs(direction[0]), std::fabs(direction[1]), std::fabs(direction[2])});
  if (largest == 0) throw FieldError("direction must be a nonzero vector.");
  const Position unit = scaled(direction, largest);  // whose square neither over- nor underflows
  return shifted(std::move(pistons), k,
                 [&](const Position& centre) { return -dot(centre, scaled(unit, length(unit))); });
}

std::vector<Piston> focused(std::vector<Piston> pistons, const Position& focus,
                            std::complex<double> k) {
  checkFinite("focus", focus);
  return shifted(std::move(pistons), k,
                 [&](const Position& centre) { return longerPath(centre, focus); });
}

}  // namespace pistonfield
