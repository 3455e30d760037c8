#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <utility>
#include <vector>

#include "field/field.h"

/// The pressure of pistons in a lossy medium by its definition, w·K/2π ∬ exp(−iKR)/R dS, for the
/// complex wave number K = k − iα. Each piston is divided into cells that are short against the
/// wavelength and against their distance from the point, and a Gauss rule is applied to each. The
/// relative error is some 1e-13. Behind a piston its plane wave is added, which continues there.
class DoubleIntegral {
 public:
  DoubleIntegral(std::vector<pistonfield::Field::Piston> pistons, std::complex<double> K)
      : pistons_(std::move(pistons)), K_(K) {
    // The zeros of the Legendre polynomial, by Newton's method.
    for (int n = 0; n < order; ++n) {
      double x = std::cos(pi * (n + 0.75) / (order + 0.5)), slope = 0;
      for (int step = 0; step < 20; ++step) {
        double before = 1, value = x;
        for (int m = 2; m <= order; ++m) {
          const double next = ((2 * m - 1) * x * value - (m - 1) * before) / m;
          before = value;
          value = next;
        }
        slope = order * (x * value - before) / (x * x - 1);
        x -= value / slope;
      }
      nodes_[n] = x;
      weights_[n] = 2 / ((1 - x * x) * slope * slope);
    }
  }

  std::complex<double> operator()(const pistonfield::Position& p) const {
    std::complex<double> sum = 0;
    for (const pistonfield::Field::Piston& piston : pistons_) sum += pressureOf(piston, p);
    return sum;
  }

 private:
  static constexpr int order = 16;
  static constexpr double pi = 3.14159265358979323846;

  /// A part of a piston, in coordinates from the point's projection.
  struct Cell {
    double x0, x1, y0, y1;
  };

  /// The point's distances from the plane of the piston, and from the piston.
  struct Place {
    double z, nearest;
  };

  std::complex<double> pressureOf(const pistonfield::Field::Piston& piston,
                                  const pistonfield::Position& p) const {
    double own[3] = {};
    for (std::size_t axis = 0; axis < 3; ++axis)
      for (std::size_t n = 0; n < 3; ++n)
        own[axis] += piston.axes[axis][n] * (p[n] - piston.centre[n]);
    const double a = piston.width / 2, b = piston.height / 2;
    const double x[] = {-a - own[0], std::clamp(0.0, -a - own[0], a - own[0]), a - own[0]},
                 y[] = {-b - own[1], std::clamp(0.0, -b - own[1], b - own[1]), b - own[1]};
    // exp(−iKR) relative to the nearest point, so that nothing underflows.
    const Place at{own[2], std::hypot(x[1], y[1], own[2])};
    std::complex<double> sum = 0;
    for (int i = 0; i < 2; ++i)
      for (int j = 0; j < 2; ++j)
        if (x[i] < x[i + 1] && y[j] < y[j + 1])
          sum += integral({x[i], x[i + 1], y[j], y[j + 1]}, at, 0);
    std::complex<double> pressure = K_ / (2 * pi) * sum * wave(at.nearest);
    const auto covered = [](double lateral, double half) {
      return std::fabs(lateral) < half ? 1 : std::fabs(lateral) == half ? 0.5 : 0;
    };
    if (own[2] < 0)
      pressure += covered(own[0], a) * covered(own[1], b) * 2.0 * std::sin(K_ * std::fabs(own[2]));
    return piston.weight * pressure;
  }

  std::complex<double> wave(double path) const {
    return std::exp(std::complex<double>(0, -1) * K_ * path);
  }

  static double distance(const Cell& cell, const Place& at) {
    const double dx = std::max({cell.x0, -cell.x1, 0.0}), dy = std::max({cell.y0, -cell.y1, 0.0});
    return std::hypot(dx, dy, at.z);
  }

  std::complex<double> integral(const Cell& cell, const Place& at, int depth) const {
    const double R = distance(cell, at);
    if (-K_.imag() * (R - at.nearest) > 45) return 0;  // negligible
    const double width = cell.x1 - cell.x0, height = cell.y1 - cell.y0,
                 size = std::max(width, height);
    if (depth == 110 || (size <= 2 * R && std::abs(K_) * size <= 14)) return byRule(cell, at);
    const double x = (cell.x0 + cell.x1) / 2, y = (cell.y0 + cell.y1) / 2;
    if (width >= height)
      return integral({cell.x0, x, cell.y0, cell.y1}, at, depth + 1) +
             integral({x, cell.x1, cell.y0, cell.y1}, at, depth + 1);
    return integral({cell.x0, cell.x1, cell.y0, y}, at, depth + 1) +
           integral({cell.x0, cell.x1, y, cell.y1}, at, depth + 1);
  }

  std::complex<double> byRule(const Cell& cell, const Place& at) const {
    const double a = (cell.x1 - cell.x0) / 2, b = (cell.y1 - cell.y0) / 2;
    double re = 0, im = 0;
    for (int i = 0; i < order; ++i)
      for (int j = 0; j < order; ++j) {
        const double x = cell.x0 + a * (1 + nodes_[i]), y = cell.y0 + b * (1 + nodes_[j]),
                     R = std::sqrt(x * x + y * y + at.z * at.z), path = R - at.nearest,
                     amplitude = weights_[i] * weights_[j] * std::exp(K_.imag() * path) / R;
        re += amplitude * std::cos(K_.real() * path);
        im -= amplitude * std::sin(K_.real() * path);
      }
    return {a * b * re, a * b * im};
  }

  std::vector<pistonfield::Field::Piston> pistons_;
  std::complex<double> K_;
  double nodes_[order] = {}, weights_[order] = {};
};
