#include "benchmarks/rayleigh/RayleighSum.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "FastNearfield/GaussLegendre.h"
#include "benchmarks/rayleigh/AddElement.h"
#include "lanes/InstructionSet.h"
#include "parallel/Spread.h"

namespace rayleigh {
namespace {

using pistonfield::Position;

constexpr double pi = 3.14159265358979323846;
constexpr std::size_t tileSize = 256;

constexpr std::array orders = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12,  13,  14,  16,  18,
                               20, 22, 24, 28, 32, 36, 40, 48, 56, 64, 80, 100, 130, 170, 220, 300};

struct Rule {
  std::vector<double> x, w;
};

const Rule& gauss(std::size_t order) {
  static std::vector<Rule> rules(512);
  Rule& rule = rules[order];
  if (rule.x.empty()) {
    rule.x.resize(order);
    rule.w.resize(order);
    pistonfield::legendre_compute(static_cast<int>(order), rule.x.data(), rule.w.data());
  }
  return rule;
}

AddElement* addElementHere() {
#if defined(__x86_64__)
  using pistonfield::InstructionSet;
  const InstructionSet set = pistonfield::instructionSet();
  return set == InstructionSet::AVX512 ? addElementAvx512
         : set == InstructionSet::AVX2 ? addElementAvx2
                                       : addElementSse2;
#else
  return addElementNeon;
#endif
}

/// ∫ exp(−2πiR)/R dx for |x| ≤ half, R² = (x0 − x)² + square.
std::complex<double> lineIntegral(const Rule& rule, double half, double x0, double square) {
  std::complex<double> sum = 0;
  for (std::size_t i = 0; i < rule.x.size(); ++i) {
    const double R = std::sqrt(std::pow(x0 - half * rule.x[i], 2) + square);
    sum += half * rule.w[i] * std::polar(1 / R, -2 * pi * R);
  }
  return sum;
}

void scaled(const Rule& rule, double half, bool halves, std::vector<float>& x,
            std::vector<float>& weights) {
  x.clear();
  weights.clear();
  const std::size_t order = rule.x.size();
  for (std::size_t i = 0; i < (halves ? (order + 1) / 2 : order); ++i) {
    x.push_back(static_cast<float>(half * rule.x[i]));
    weights.push_back(
        static_cast<float>(half * rule.w[i] * (halves && 2 * i + 1 != order ? 2 : 1)));
  }
}

}  // namespace

Points::Points(const std::vector<Position>& positions, double k) : count(positions.size()) {
  const auto coordinate = [&](std::size_t axis) {
    std::vector<float> values((count + tileSize - 1) / tileSize * tileSize,
                              static_cast<float>(positions.back()[axis] * k / (2 * pi)));
    for (std::size_t n = 0; n < count; ++n)
      values[n] = static_cast<float>(positions[n][axis] * k / (2 * pi));
    return values;
  };
  x = coordinate(0);
  y = coordinate(1);
  z = coordinate(2);
}

RayleighSum::RayleighSum(const std::vector<pistonfield::Field::Piston>& pistons, double k,
                         bool halvesElements)
    : k_(k), halves_(halvesElements) {
  const double wavelengths = k / (2 * pi);
  for (const pistonfield::Field::Piston& piston : pistons) {
    Element element{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      element.centre[axis] = static_cast<float>(piston.centre[axis] * wavelengths);
      for (std::size_t n = 0; n < 3; ++n) {
        element.axes[axis][n] = static_cast<float>(piston.axes[axis][n]);
        if (piston.axes[axis][n] != (axis == n ? 1 : 0)) element.turned = true;
      }
    }
    element.halfWidth = static_cast<float>(piston.width / 2 * wavelengths);
    element.halfHeight = static_cast<float>(piston.height / 2 * wavelengths);
    element.factor = std::complex<float>(piston.weight);
    elements_.push_back(element);
  }
}

/// For each element, order and class of distances: the largest error of a line integral along x,
/// times the height, and along y, times the width.
void RayleighSum::measureErrors(const std::vector<Position>& points) {
  const bool isAlone = elements_.size() == 1;
  const std::size_t most = isAlone ? 3000 : 1000;
  // The points of arrays are not near to an element, for its size.
  const Rule& exact = gauss(isAlone ? 400 : 80);
  const std::size_t stride = std::max<std::size_t>(1, points.size() / most) | 1;
  const std::array<float, distanceClasses> none{};
  xErrors_.assign(elements_.size(), Errors(orders.size(), none));
  yErrors_ = xErrors_;
  for (std::size_t e = 0; e < elements_.size(); ++e) {
    const Element& element = elements_[e];
    const double a = element.halfWidth, b = element.halfHeight;
    std::size_t farthest = 0;
    const auto measure = [&](Errors& errors, std::size_t distance, double half, double other,
                             double along, double across, double z) {
      // The nearest line and an edge.
      for (const double offset :
           {std::max(-other, std::min(across, other)), std::copysign(other, across)}) {
        const double square = std::pow(across - offset, 2) + z * z;
        const auto reference = lineIntegral(exact, half, along, square);
        for (std::size_t n = 0; n < orders.size(); ++n) {
          const double error =
              2 * other * std::abs(lineIntegral(gauss(orders[n]), half, along, square) - reference);
          errors[n][distance] = std::max(errors[n][distance], static_cast<float>(error));
          if (error < 1e-7) break;
        }
      }
    };
    for (std::size_t n = 0; n < points.size(); n += stride) {
      std::array<double, 3> own{};
      for (std::size_t axis = 0; axis < 3; ++axis)
        for (std::size_t m = 0; m < 3; ++m)
          own[axis] += element.axes[axis][m] *
                       (points[n][m] * k_ / (2 * pi) - static_cast<double>(element.centre[m]));
      const double besideX = std::max(std::fabs(own[0]) - a, 0.0),
                   besideY = std::max(std::fabs(own[1]) - b, 0.0);
      const auto distance = static_cast<std::size_t>(distanceClass(
          static_cast<float>(besideX * besideX + besideY * besideY + own[2] * own[2])));
      farthest = std::max(farthest, distance);
      measure(xErrors_[e], distance, a, b, own[0], own[1], own[2]);
      measure(yErrors_[e], distance, b, a, own[1], own[0], own[2]);
    }
    // A pack whose nearest point is in one class may have others in all classes above.
    for (Errors* errors : {&xErrors_[e], &yErrors_[e]})
      for (auto& ofOrder : *errors) {
        std::fill(ofOrder.begin() + static_cast<std::ptrdiff_t>(farthest), ofOrder.end(),
                  ofOrder[farthest]);
        for (std::size_t c = distanceClasses - 1; c-- > 0;)
          ofOrder[c] = std::max(ofOrder[c], ofOrder[c + 1]);
      }
  }
}

void RayleighSum::chooseRules(double xError, double yError) {
  const auto order = [](const Errors& errors, std::size_t distance, double most) {
    std::size_t n = orders.size() - 1;
    while (n > 0 && errors[n - 1][distance] <= most) --n;
    return static_cast<std::size_t>(orders[n]);
  };
  for (std::size_t e = 0; e < elements_.size(); ++e)
    for (std::size_t c = 0; c < distanceClasses; ++c)
      setRule(elements_[e], c, order(xErrors_[e], c, xError), order(yErrors_[e], c, yError));
}

void RayleighSum::setRule(Element& element, std::size_t distance, std::size_t xOrder,
                          std::size_t yOrder) const {
  ProductRule& rule = element.rules[distance];
  scaled(gauss(xOrder), element.halfWidth, false, rule.x, rule.xWeights);
  scaled(gauss(yOrder), element.halfHeight, halves_, rule.y, rule.yWeights);
}

void RayleighSum::useOrder(std::size_t order) {
  for (Element& element : elements_)
    for (std::size_t c = 0; c < distanceClasses; ++c) setRule(element, c, order, order);
}

double RayleighSum::tune(const std::vector<Position>& points,
                         const std::vector<std::complex<double>>& pressures, double peak,
                         double tolerance) {
  if (xErrors_.empty()) measureErrors(points);
  const Points here(points, k_);
  const auto error = [&](double x, double y) {
    chooseRules(x, y);
    const std::vector<std::complex<float>> sums = at(here);
    double most = 0;
    for (std::size_t n = 0; n < pressures.size(); ++n)
      most = std::max(most, std::abs(std::complex<double>(sums[n]) - pressures[n]));
    return most / peak;
  };
  // Both directions' errors as large as they may be, and then each alone.
  constexpr double finest = 1e-7, factor = 1.2;
  double x = peak, y = peak;
  while (x > finest && error(x, y) > tolerance) x = y /= factor;
  while (x < peak && error(x * factor, y) <= tolerance) x *= factor;
  while (y < peak && error(x, y * factor) <= tolerance) y *= factor;
  return error(x, y);
}

std::vector<std::complex<float>> RayleighSum::at(const Points& points) const {
  std::vector<std::complex<float>> pressures(points.count);
  AddElement* const add = addElementHere();
  pistonfield::parallel::spread(
      points.x.size() / tileSize, 1, [&](std::uint64_t begin, std::uint64_t end) {
        for (std::size_t first = begin * tileSize; first < end * tileSize; first += tileSize) {
          alignas(64) float re[tileSize] = {}, im[tileSize] = {};
          for (const Element& element : elements_)
            add(element, &points.x[first], &points.y[first], &points.z[first], tileSize, re, im);
          for (std::size_t n = 0; n < std::min(tileSize, points.count - first); ++n)
            pressures[first + n] = {re[n], im[n]};
        }
      });
  return pressures;
}

}  // namespace rayleigh
