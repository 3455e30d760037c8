#include "field/spectrum/BandInterpolation.h"

#include <algorithm>
#include <cmath>

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846;

// In evaluations of one piston at one point. A node's tolerance is smaller.
constexpr double costOfNode = 1.3, costOfFactor = 1.0 / 250, costOfValue = 0.1;

/// An upper bound of 4·Σ |J_j(c)|, j ≥ n, for n > c ≥ 0: J_n(c) is at most
/// (x·exp(s)/(1 + s))^n with x = c/n and s = √(1 − x²), and the bounds fall by x/(1 + s) and more
/// from each to the next.
double errorOfNodes(double c, std::size_t n) {
  const double order = static_cast<double>(n), x = c / order, s = std::sqrt(1 - x * x);
  if (x == 0) return 0;
  const double logarithm = order * (std::log1p(x - 1) + s - std::log1p(s));
  return 4 * (1 + std::expm1(logarithm)) / (1 - x / (1 + s));
}

/// The fewest nodes with this error, below `most`.
std::optional<std::size_t> nodesFor(double c, double error, std::size_t most) {
  if (!(c < static_cast<double>(most))) return std::nullopt;
  for (auto n = static_cast<std::size_t>(c) + 1; n < most; ++n)
    if (errorOfNodes(c, n) <= error) return n;
  return std::nullopt;
}

}  // namespace

BandInterpolation::BandInterpolation(std::size_t nodes, std::size_t length)
    : nodes_(nodes), factors_(nodes * length), columns_(nodes) {
  const double half = static_cast<double>(length - 1) / 2, order = static_cast<double>(nodes);
  std::vector<double> weights(nodes);
  for (std::size_t j = 0; j < nodes; ++j) {
    const double angle = pi * (static_cast<double>(j) + 0.5) / order;
    nodes_[j] = half - half * std::cos(angle);
    weights[j] = j % 2 == 0 ? std::sin(angle) : -std::sin(angle);
    columns_[j] = static_cast<int>(j);
  }
  for (std::size_t place = 0; place < length; ++place) {
    double* const factors = &factors_[place * nodes];
    double sum = 0, magnitudes = 0;
    for (std::size_t j = 0; j < nodes; ++j) {
      const double apart = static_cast<double>(place) - nodes_[j];
      // At a node its value is that of the polynomial, but for rounding.
      factors[j] = weights[j] / (std::fabs(apart) > 1e-13 * half ? apart : 1e-13 * half);
      sum += factors[j];
    }
    for (std::size_t j = 0; j < nodes; ++j) {
      factors[j] /= sum;
      magnitudes += std::fabs(factors[j]);
    }
    factorSum_ = std::max(factorSum_, magnitudes);
  }
  single_.assign(factors_.begin(), factors_.end());
}

BandPlan bandPlan(std::size_t count, double phaseStep, std::size_t pistons, double error) {
  const auto all = static_cast<double>(count), evaluated = static_cast<double>(pistons);
  BandPlan plan{count, 0, all * evaluated};
  constexpr std::size_t leastLength = 8;
  for (std::size_t parts = 1; count / parts >= leastLength; parts *= 2) {
    const std::size_t length = (count + parts - 1) / parts;
    // Half the band times half the difference of paths.
    const double c = phaseStep * static_cast<double>(length - 1) / 4;
    const std::optional<std::size_t> nodes = nodesFor(c, error, length);
    if (!nodes) continue;
    const auto n = static_cast<double>(*nodes), bands = static_cast<double>(parts);
    const double cost = bands * n * evaluated * costOfNode + all * (n * costOfFactor + costOfValue);
    if (cost < plan.cost) plan = {length, *nodes, cost};
  }
  return plan;
}

}  // namespace pistonfield
