#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "FastNearfield/RectangularPiston2.h"
#include "FastNearfield/packs/PackedPressure.h"
#include "support/LiteralPressure.h"

// Measures the accuracy of the evaluations for a piston of 5λ × 7.5λ and writes data files of two
// or more columns:
//
//   accuracy <folder>
//
// order.dat has the error relative to the peak against the order, for the rule alone and for the
// kernel in single precision, on the plane y = 0, x ≤ 3.75λ, λ/4 ≤ z ≤ 15λ. distance.dat has the
// error against kR, in units of the precision, for the kernel at order 64 and for the evaluation on
// the CPU in both precisions.

namespace {

using C = std::complex<double>;
using support::HalfRule;

constexpr float wavelength = 1.5e-3f, s = 5 * wavelength, l = 7.5f * wavelength, k = 4188.79f;

struct Position {
  float x, y, z;
};

std::vector<C> literal(const std::vector<Position>& points, int order) {
  const HalfRule<double> rule(order);
  std::vector<C> pressures;
  pressures.reserve(points.size());
  for (const Position& p : points)
    pressures.push_back(support::literalPressure(
        static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z),
        static_cast<double>(s) / 2, static_cast<double>(l) / 2, static_cast<double>(k), rule));
  return pressures;
}

std::vector<C> kernel(const std::vector<Position>& points, int order) {
  const HalfRule<float> rule(order);
  std::vector<pistonfield::Complex> pressures(points.size());
  pistonfield::packedPressure(pistonfield::instructionSet())(&points[0].x, pressures.data(),
                                                             static_cast<int>(points.size()), s / 2,
                                                             l / 2, k, rule.view(), {});
  std::vector<C> wide;
  wide.reserve(points.size());
  for (const pistonfield::Complex& p : pressures) wide.emplace_back(p.re, p.im);
  return wide;
}

template <class T>
std::vector<C> onCpu(const std::vector<Position>& points) {
  const pistonfield::RectangularPistonCuda2 piston(static_cast<double>(l), static_cast<double>(s),
                                                   static_cast<double>(k));
  std::cout.setstate(std::ios::failbit);  // the progress lines
  std::vector<C> pressures;
  for (const Position& p : points) {
    pistonfield::MVector<double, 3> origin, spacing;
    origin[0] = static_cast<double>(p.x);
    origin[1] = static_cast<double>(p.y);
    origin[2] = static_cast<double>(p.z);
    T out[2];
    piston.computeCPU(out, pistonfield::Grid3DR<double>(1, 1, 1, origin, spacing));
    pressures.emplace_back(out[0], out[1]);
  }
  std::cout.clear();
  return pressures;
}

double largest(const std::vector<C>& values) {
  double most = 0;
  for (const C& value : values) most = std::max(most, std::abs(value));
  return most;
}

double largestError(const std::vector<C>& actual, const std::vector<C>& exact) {
  double most = 0;
  for (std::size_t n = 0; n < exact.size(); ++n)
    most = std::max(most, std::abs(actual[n] - exact[n]));
  return most;
}

void againstOrder(std::ostream& out) {
  std::vector<Position> plane;
  for (int i = 0; i <= 60; ++i)
    for (int j = 0; j <= 100; ++j)
      plane.push_back({3.75f * wavelength * static_cast<float>(i) / 60, 0,
                       wavelength * (0.25f + 14.75f * static_cast<float>(j) / 100)});
  const std::vector<C> exact = literal(plane, 200);
  const double peak = largest(exact);
  for (const int order : {2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 24, 28, 32, 40, 48, 64})
    out << order << " " << largestError(literal(plane, order), exact) / peak << " "
        << largestError(kernel(plane, order), exact) / peak << "\n";
}

void againstDistance(std::ostream& out) {
  std::mt19937 random(1);
  std::uniform_real_distribution<float> unit(0, 1);
  for (int quarter = 5; quarter < 20; ++quarter) {
    const float decade = 0.25f * static_cast<float>(quarter);
    const float distance = std::pow(10.0f, decade) / k;
    std::vector<Position> points;
    while (points.size() < 2000) {
      const float R = distance * (1 + 0.2f * unit(random));
      const float cosine = unit(random), angle = 6.2831853f * unit(random);
      const float sine = std::sqrt(1 - cosine * cosine);
      const Position p{R * sine * std::cos(angle), R * sine * std::sin(angle), R * cosine};
      // Closer to a plane of symmetry, the kernels double one part of an edge.
      if (std::min(std::fabs(p.x), std::fabs(p.y)) > 1e-7f) points.push_back(p);
    }
    const std::vector<C> exact = literal(points, 200);
    const double single = std::ldexp(1.0, -24), dual = std::ldexp(1.0, -53);
    out << std::pow(10.0f, decade) << " " << largestError(kernel(points, 64), exact) / single << " "
        << largestError(onCpu<float>(points), exact) / single << " "
        << largestError(onCpu<double>(points), exact) / dual << "\n";
  }
}

void write(const std::string& path, void (*table)(std::ostream&)) {
  std::ofstream out(path);
  out.precision(3);
  table(out);
  out.close();
  if (!out) {
    std::cerr << "cannot write " << path << "\n";
    std::exit(1);
  }
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc != 2) {
    std::cerr << "usage: accuracy FOLDER\n";
    return 2;
  }
  const std::string folder = argv[1];
  write(folder + "/order.dat", againstOrder);
  write(folder + "/distance.dat", againstDistance);
}
