#include "field/pulse/PulseOrderTable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "FastNearfield/intervals/PistonOnPoints.h"

namespace pistonfield {
namespace {

constexpr double ln2 = 0.693147180559945309;
constexpr float tooMany = 1e9F;  // of which a share is a number

/// min over ξ of (L + ω·sinh ξ)/2ξ = L·J(L/ω).
class Orders {
 public:
  Orders() {
    // At the minimum L/ω = ξ·cosh ξ − sinh ξ, and the order is ω·cosh(ξ)/2.
    for (std::size_t n = 0; n < values_.size(); ++n) {
      const double ratio = std::ldexp(1 + static_cast<double>(n % parts) / parts,
                                      leastExponent + static_cast<int>(n / parts));
      double least = 0, most = 20;
      for (int step = 0; step < 50; ++step) {
        const double xi = (least + most) / 2;
        (xi * std::cosh(xi) - std::sinh(xi) < ratio ? least : most) = xi;
      }
      values_[n] = std::cosh(most) / (2 * ratio);
    }
  }

  /// Up to a quarter of the next L/ω too large.
  double operator()(double L, double omega) const {
    int exponent = 0;
    const double fraction = std::frexp(L / omega, &exponent);
    const int index =
        (exponent - 1 - leastExponent) * parts + static_cast<int>((2 * fraction - 1) * parts);
    if (index < 0) return omega / 2 + L;  // not needed: thousands of nodes
    return L * values_[std::min<std::size_t>(static_cast<std::size_t>(index), values_.size() - 1)];
  }

 private:
  static constexpr int parts = 8, leastExponent = -12;
  std::array<double, std::size_t{parts} * 36> values_{};
};

/// ω per bin beyond which a spectrum has a mass, or a slope, of at most 2^-n.
constexpr int leastLevel = -8, levels = PulseOrders::errors + 2 - leastLevel;
using Reach = std::array<double, levels>;

Reach reachOf(const std::vector<PulseSpectrum::Part>& parts, double step,
              double PulseSpectrum::Part::*quantity, double unit) {
  Reach reach{};
  std::size_t left = parts.size();
  double beyond = 0;
  for (int n = levels; n-- > 0;) {
    while (left > 0 &&
           beyond + parts[left - 1].*quantity * unit <= std::ldexp(1.0, -n - leastLevel))
      beyond += parts[--left].*quantity * unit;
    reach[static_cast<std::size_t>(n)] = left > 0 ? parts[left - 1].omega * step : 0;
  }
  return reach;
}

double pathOf(int m) { return std::ldexp(m % 2 == 0 ? 1.0 : 1.5, m / 2 + PulseOrders::leastPath); }

void fill(const Reach& reach, float (&table)[PulseOrders::errors][PulseOrders::paths]) {
  static const Orders orderOf;
  // The ranges share half of the error. The components beyond the last range may have sixteen times
  // the error: their phases at the nodes differ, and their errors hardly add up. This was measured.
  constexpr int beyond = -4;
  const auto first = static_cast<int>(
      std::count_if(reach.begin(), reach.end(), [](double omega) { return !(omega > 0); }));
  // Reaches ascend with the level; those of the first levels, with less than all of the mass, are
  // 0.
  for (int error = 0; error < PulseOrders::errors; ++error) {
    const int last = std::max(error + beyond - leastLevel, 0);
    bool isTooMuch = std::isinf(reach[static_cast<std::size_t>(last)]);
    for (int path = 0; path < PulseOrders::paths; ++path) {
      double most = 0;
      for (int level = std::max(first, 1); level <= last && !isTooMuch; ++level) {
        // The range up to this reach has at most the mass beyond the reach before.
        const double L = ln2 * (last - level) + std::log1p(last - first);
        most = std::max(
            most, orderOf(std::max(L, 0.1), reach[static_cast<std::size_t>(level)] * pathOf(path)));
      }
      isTooMuch = isTooMuch || most > mostIntervalOrder;
      table[error][path] = isTooMuch ? tooMany : static_cast<float>(most + 0.1);
    }
  }
}

const GaussRules<double>& gaussRules() {
  static const GaussRules<double> rules(1, mostIntervalOrder);
  return rules;
}

}  // namespace

PulseOrders pulseOrders(const PulseSpectrum& spectrum, double step) {
  PulseOrders orders{};
  orders.mass = static_cast<float>(spectrum.mass());
  orders.slope = static_cast<float>(spectrum.slope() * step);
  fill(reachOf(spectrum.parts(), step, &PulseSpectrum::Part::mass, 1), orders.byMass);
  fill(reachOf(spectrum.parts(), step, &PulseSpectrum::Part::slope, step), orders.bySlope);
  orders.rules = gaussRules().table();
  return orders;
}

}  // namespace pistonfield
