#include "field/spectrum.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "benchmarks/CpuTimes.h"
#include "field/field.h"

// Compares `spectrum` with one call of Field for each wave number. Both run in turns in this
// process, and the least CPU time of each counts. One core is the most even:
// taskset -c 1 spectrum_benchmark
//
// Errors are the largest at every 41st point and every 5th wave number, against Field with the
// tolerance 1e-10, relative to the largest magnitude of all.

namespace {

using pistonfield::Field;
using Piston = pistonfield::Field::Piston;
using pistonfield::Position;
using pistonfield::WaveNumbers;
using Pressures = std::vector<std::complex<double>>;

constexpr double pi = 3.14159265358979323846;

/// A band of 100 % around the wave number of lengths in wavelengths.
constexpr WaveNumbers band = {pi, 2 * pi / 255, 256};

double waveNumber(std::size_t m) { return band.first + static_cast<double>(m) * band.step; }

/// In front of an aperture, scattered.
std::vector<Position> scattered(std::size_t count, double width, double height, double depth) {
  std::mt19937 random(1);
  const auto from = [&](double least, double most) {
    return std::uniform_real_distribution<double>(least, most)(random);
  };
  std::vector<Position> points(count);
  for (Position& point : points)
    point = {from(-width, width), from(-height, height), from(0.25, depth)};
  return points;
}

/// A plane along the axis, row by row.
std::vector<Position> plane(std::size_t rows, std::size_t columns, double width, double depth) {
  std::vector<Position> points;
  for (std::size_t j = 0; j < rows; ++j)
    for (std::size_t i = 0; i < columns; ++i)
      points.push_back({width * static_cast<double>(i) / static_cast<double>(columns), 0,
                        0.25 + depth * static_cast<double>(j) / static_cast<double>(rows)});
  return points;
}

Pressures oneByOne(const std::vector<Piston>& pistons, const std::vector<Position>& points,
                   double tolerance) {
  Pressures pressures(points.size() * band.count);
  for (std::size_t m = 0; m < band.count; ++m) {
    const Pressures p = Field(pistons, waveNumber(m)).at(points, within(tolerance));
    for (std::size_t n = 0; n < p.size(); ++n) pressures[m + band.count * n] = p[n];
  }
  return pressures;
}

Pressures together(const std::vector<Piston>& pistons, const std::vector<Position>& points,
                   double tolerance) {
  pistonfield::SpectrumOptions options;
  options.tolerance = tolerance;
  return pistonfield::spectrum(pistons, band, points, options);
}

/// The exact pressures of some points at some wave numbers.
class Samples {
 public:
  Samples(const std::vector<Piston>& pistons, const std::vector<Position>& points) {
    std::vector<Position> some;
    for (std::size_t n = 0; n < points.size(); n += 41) some.push_back(points[n]);
    for (std::size_t m = 0; m < band.count; m += 5)
      pressures_.push_back(Field(pistons, waveNumber(m)).at(some, within(1e-10)));
  }

  double error(const Pressures& pressures) const {
    double most = 0;
    for (std::size_t i = 0; i < pressures_.size(); ++i)
      for (std::size_t n = 0; n < pressures_[i].size(); ++n)
        most = std::max(most, std::abs(pressures[5 * i + band.count * 41 * n] - pressures_[i][n]));
    return most / peakOf(pressures);
  }

 private:
  std::vector<Pressures> pressures_;
};

void compare(const char* name, const std::vector<Piston>& pistons,
             const std::vector<Position>& points) {
  const Samples samples(pistons, points);
  for (const double tolerance : {1e-2, 1e-3, 1e-4, 1e-5}) {
    const double errorOfField = samples.error(oneByOne(pistons, points, tolerance)),
                 error = samples.error(together(pistons, points, tolerance));
    const std::vector<double> seconds = secondsOf({[&] { oneByOne(pistons, points, tolerance); },
                                                   [&] { together(pistons, points, tolerance); }});
    const auto ns = [&](double all) {
      return 1e9 * all / static_cast<double>(points.size() * band.count);
    };
    std::printf(
        "%s, %zu points, %zu wave numbers, tolerance %.0e, ns a pressure (largest error): Field "
        "%.1f (%.1e), spectrum %.2f (%.1e): %.1f times as fast, error times %.2f\n",
        name, points.size(), band.count, tolerance, ns(seconds[0]), errorOfField, ns(seconds[1]),
        error, seconds[0] / seconds[1], error / errorOfField);
    std::fflush(stdout);
  }
}

/// Elements beside each other, focused at the middle of the band.
std::vector<Piston> linearArray(int count, double pitch, double focus) {
  std::vector<Piston> pistons;
  for (int n = 0; n < count; ++n) {
    const double x = (n - (count - 1) / 2.0) * pitch;
    pistons.push_back({0.9 * pitch, 15, {x, 0, 0}});
    pistons.back().weight = std::polar(1.0, 2 * pi * (std::hypot(x, focus) - focus));
  }
  return pistons;
}

}  // namespace

int main() {
  printProcessor();
  constexpr std::size_t counts[] = {1000, 10000};
  for (const std::size_t count : counts) {
    compare("piston 5x7.5 wavelengths, scattered", {{5, 7.5}}, scattered(count, 5, 7.5, 30));
    compare("narrow element 0.5x15 wavelengths, scattered", {{0.5, 15}},
            scattered(count, 15, 7.5, 60));
    const std::size_t side = count == 1000 ? 32 : 100;
    compare("piston 5x7.5 wavelengths, plane", {{5, 7.5}}, plane(side, side, 5, 30));
    compare("narrow element 0.5x15 wavelengths, plane", {{0.5, 15}}, plane(side, side, 15, 60));
  }
  compare("array of 64 elements 0.45x15 wavelengths, scattered", linearArray(64, 0.5, 60),
          scattered(1000, 20, 10, 120));
}
