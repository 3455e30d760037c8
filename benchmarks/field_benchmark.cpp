#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/PressuresAt.h"
#include "benchmarks/CpuTimes.h"
#include "benchmarks/rayleigh/RayleighSum.h"
#if PISTONFIELD_BENCHMARK_FFT
#include "benchmarks/rayleigh/FftConvolution.h"
#endif
#include "core/Progress.h"
#include "field/field.h"

// Compares Field with pistonfield's evaluation at the best single order, with the Rayleigh double
// sum, and with itself. What is compared runs in turns in this process, and the least CPU time of
// each counts. One core is the most even: taskset -c 1 field_benchmark
//
// Errors are relative to the peak, against Field with the tolerance 1e-10 at every 51st point or
// so; unit tests compare Field with references of its own.

namespace {

using pistonfield::AxesGrid;
using pistonfield::Field;
using Piston = pistonfield::Field::Piston;
using pistonfield::Position;
using Pressures = std::vector<std::complex<double>>;

constexpr double pi = 3.14159265358979323846;

std::vector<double> axis(double first, double last, std::size_t count) {
  std::vector<double> values(count);
  for (std::size_t n = 0; n < count; ++n)
    values[n] = first + (last - first) * static_cast<double>(n) /
                            static_cast<double>(std::max<std::size_t>(count - 1, 1));
  return values;
}

std::vector<Position> pointsOf(const AxesGrid& grid) {
  std::vector<Position> points;
  for (const double z : grid.z)
    for (const double y : grid.y)
      for (const double x : grid.x) points.push_back({x, y, z});
  return points;
}

/// Some of the points, and exact pressures there.
struct Samples {
  Samples(const Field& field, const std::vector<Position>& points) {
    constexpr std::size_t most = 3000;
    const std::size_t stride = std::max<std::size_t>(points.size() / most, 1) | 1;
    for (std::size_t n = 0; n < points.size(); n += stride) {
      at.push_back(n);
      positions.push_back(points[n]);
    }
    pistonfield::FieldOptions exact;
    exact.tolerance = 1e-10;
    pressures = field.at(positions, exact);
  }

  template <class Values>
  double error(const Values& values, double peak) const {
    double most = 0;
    for (std::size_t n = 0; n < at.size(); ++n)
      most = std::max(most, std::abs(std::complex<double>(values[at[n]]) - pressures[n]));
    return most / peak;
  }

  std::vector<std::size_t> at;
  std::vector<Position> positions;
  Pressures pressures;
};

double nsAPoint(double seconds, std::size_t points) {
  return 1e9 * seconds / static_cast<double>(points);
}

/// The wave number of lengths in wavelengths, as a number that a float holds.
constexpr double unitK = static_cast<float>(2 * pi);

/// pistonfield's call without its argument checks: all points with one order, in single precision.
class SingleOrder {
 public:
  SingleOrder(const Piston& piston, const std::vector<Position>& points)
      : width_(static_cast<float>(piston.width)),
        height_(static_cast<float>(piston.height)),
        re_(points.size()),
        im_(points.size()) {
    for (const Position& point : points) points_.insert(points_.end(), point.begin(), point.end());
  }

  void run(int order) {
    setCudaIntegratorParameters("RectangularPiston", order);
    re_ = im_ = std::vector<double>(re_.size());  // as a call makes them
    pistonfield::pressuresAt(points_.data(), static_cast<int>(re_.size()), height_, width_,
                             static_cast<float>(unitK), re_.data(), im_.data());
  }

  Pressures pressures() const {
    Pressures values(re_.size());
    for (std::size_t n = 0; n < re_.size(); ++n) values[n] = {re_[n], im_[n]};
    return values;
  }

 private:
  float width_, height_;
  std::vector<double> points_, re_, im_;
};

/// The largest error of each order at the samples, from order 1 on.
std::vector<double> errorsOfOrders(const Piston& piston, const Samples& samples, double peak) {
  SingleOrder single(piston, samples.positions);
  std::vector<double> errors;
  for (int order = 1; order <= 128; ++order) {
    single.run(order);
    const Pressures pressures = single.pressures();
    double most = 0;
    for (std::size_t n = 0; n < pressures.size(); ++n)
      most = std::max(most, std::abs(pressures[n] - samples.pressures[n]));
    errors.push_back(most / peak);
  }
  return errors;
}

/// The least order with at most this error or, if single precision has none, with at most 1.1 times
/// the least error of all orders.
int leastOrder(const std::vector<double>& errors, double error) {
  const double reached = std::max(error, 1.1 * *std::min_element(errors.begin(), errors.end()));
  const auto isReached = [&](double e) { return e <= reached; };
  return 1 +
         static_cast<int>(std::find_if(errors.begin(), errors.end(), isReached) - errors.begin());
}

/// One piston on half of the plane y = 0; lengths in wavelengths.
void onePiston(double width, double height) {
  const Piston piston{static_cast<float>(width), static_cast<float>(height)};
  const Field field({piston}, unitK);
  // A regular grid of numbers that single precision holds.
  const auto held = [](double value) { return std::round(value * 0x1p14) * 0x1p-14; };
  const AxesGrid grid{axis(0, 300 * held(0.75 * width / 300), 301),
                      {0},
                      axis(0.25, 0.25 + 500 * held(19.75 / 500), 501)};
  const std::vector<Position> points = pointsOf(grid);
  const Samples samples(field, points);
  const rayleigh::Points sumPoints(points, unitK);
  SingleOrder single(piston, points);
  rayleigh::RayleighSum sum({piston}, unitK, true);
  std::vector<double> errors;
  for (const double tolerance : {1e-2, 1e-3, 1e-4}) {
    pistonfield::FieldReport report;
    const Pressures pressures = field.on(grid, within(tolerance), &report);
    const double peak = peakOf(pressures), error = samples.error(pressures, peak);
    if (errors.empty()) errors = errorsOfOrders(piston, samples, peak);
    const int sameError = leastOrder(errors, error), sameTolerance = leastOrder(errors, tolerance);
    const double sumError = sum.tune(samples.positions, samples.pressures, peak, tolerance);
    const std::vector<double> seconds =
        secondsOf({[&] { field.on(grid, within(tolerance)); }, [&] { single.run(sameError); },
                   [&] { single.run(sameTolerance); }, [&] { sum.at(sumPoints); }});
    const auto ns = [&](std::size_t task) { return nsAPoint(seconds[task], points.size()); };
    const auto errorOf = [&](int order) { return errors[static_cast<std::size_t>(order - 1)]; };
    std::printf(
        "piston %gx%g wavelengths, tolerance %.0e, ns a point (largest error):\n"
        "  Field %.1f (%.1e; orders %d to %d, %.0f nodes a point)\n"
        "  pistonfield at the best single order for Field's error: %d, %.1f (%.1e); ratio %.2f\n"
        "  pistonfield at the best single order for the tolerance: %d, %.1f (%.1e); ratio %.2f\n"
        "  double sum for the tolerance: %.1f (%.1e); ratio %.2f\n",
        width, height, tolerance, ns(0), error, report.leastOrder, report.mostOrder,
        report.nodes / static_cast<double>(points.size()), sameError, ns(1), errorOf(sameError),
        seconds[1] / seconds[0], sameTolerance, ns(2), errorOf(sameTolerance),
        seconds[2] / seconds[0], ns(3), sumError, seconds[3] / seconds[0]);
    std::fflush(stdout);
  }
}

constexpr double arrayK = 2 * pi * 5e6 / 1500;  // 5 MHz in water

/// 128 elements of 0.27 mm × 5 mm, focused at a distance of 40 mm.
std::vector<Piston> linearArray(double pitch) {
  std::vector<Piston> pistons;
  for (int n = 0; n < 128; ++n) {
    const double x = (n - 63.5) * pitch, focus = 40e-3;
    Piston piston{0.27e-3, 5e-3, {x, 0, 0}};
    piston.weight = std::polar(1.0, arrayK * (std::hypot(x, focus) - focus));
    pistons.push_back(piston);
  }
  return pistons;
}

/// The array and its grid are symmetric in x, so the double sum computes half of the points.
void array(const char* name, double pitch) {
  const std::vector<Piston> pistons = linearArray(pitch);
  const Field field(pistons, arrayK);
  const AxesGrid grid{axis(-15e-3, 15e-3, 301), {0}, axis(5e-3, 80e-3, 501)};
  AxesGrid half = grid;
  half.x.resize((grid.x.size() + 1) / 2);
  const std::vector<Position> points = pointsOf(grid), halfOfPoints = pointsOf(half);
  const Samples samples(field, points), halfOfSamples(field, halfOfPoints);
  const rayleigh::Points sumPoints(halfOfPoints, arrayK);
  rayleigh::RayleighSum sum(pistons, arrayK, true);
  for (const double tolerance : {5e-3, 5e-4, 8e-5}) {
    pistonfield::FieldReport report;
    const Pressures pressures = field.on(grid, within(tolerance), &report);
    const double peak = peakOf(pressures);
    const double sumError =
        sum.tune(halfOfSamples.positions, halfOfSamples.pressures, peak, tolerance);
    const std::vector<double> seconds =
        secondsOf({[&] { field.on(grid, within(tolerance)); }, [&] { sum.at(sumPoints); }});
    std::printf(
        "array, %s, tolerance %.0e, ns a point: Field %.1f (largest error %.1e, "
        "%.0f nodes a point), double sum of half of the plane %.1f (%.1e): double sum/Field %.2f\n",
        name, tolerance, nsAPoint(seconds[0], points.size()), samples.error(pressures, peak),
        report.nodes / static_cast<double>(points.size()), nsAPoint(seconds[1], points.size()),
        sumError, seconds[1] / seconds[0]);
    std::fflush(stdout);
  }
}

/// Unequal turned elements in a plane's neighbourhood, and scattered points in front of them.
void scattered() {
  std::mt19937 random(1);
  const auto from = [&](double least, double most) {
    return std::uniform_real_distribution<double>(least, most)(random);
  };
  std::vector<Piston> pistons = linearArray(0.3e-3);
  for (Piston& piston : pistons) {
    piston.width *= from(0.8, 1.2);
    piston.height *= from(0.8, 1.2);
    piston.centre[2] = from(-0.5e-3, 0);
    const double c = std::cos(from(-0.2, 0.2)), s = std::sqrt(1 - c * c);
    piston.axes = {{{c, 0, -s}, {0, 1, 0}, {s, 0, c}}};
  }
  std::vector<Position> points(std::size_t{301} * 501);
  for (Position& point : points)
    point = {from(-15e-3, 15e-3), from(-5e-3, 5e-3),
             from(8e-3, 80e-3)};  // in front of all elements
  const Field field(pistons, arrayK);
  const Samples samples(field, points);
  const rayleigh::Points sumPoints(points, arrayK);
  rayleigh::RayleighSum sum(pistons, arrayK, false);
  for (const double tolerance : {5e-3, 5e-4, 8e-5}) {
    pistonfield::FieldReport report;
    const Pressures pressures = field.at(points, within(tolerance), &report);
    const double peak = peakOf(pressures);
    const double sumError = sum.tune(samples.positions, samples.pressures, peak, tolerance);
    const std::vector<double> seconds =
        secondsOf({[&] { field.at(points, within(tolerance)); }, [&] { sum.at(sumPoints); }});
    std::printf(
        "128 unequal turned elements, scattered points, tolerance %.0e, ns a point: Field %.1f "
        "(largest error %.1e, %.0f nodes a point), double sum %.1f (%.1e): double sum/Field %.2f\n",
        tolerance, nsAPoint(seconds[0], points.size()), samples.error(pressures, peak),
        report.nodes / static_cast<double>(points.size()), nsAPoint(seconds[1], points.size()),
        sumError, seconds[1] / seconds[0]);
    std::fflush(stdout);
  }
}

/// The grid a little aside, where it has no mirror images.
AxesGrid displacedFrom(AxesGrid grid) {
  for (std::vector<double>* values : {&grid.x, &grid.y})
    for (double& value : *values)
      if (values->size() > 1) value += 1e-3;
  return grid;
}

#if PISTONFIELD_BENCHMARK_FFT
/// One piston in a wide volume, ±12 wavelengths in steps of a sixteenth.
void wideVolume() {
  constexpr int reach = 12 * 16;
  constexpr double tolerance = 1.5e-3;
  const Field field({{5, 7.5}}, 2 * pi);
  const std::vector<double> across = axis(-12, 12, 2 * reach + 1);
  const AxesGrid grid{across, across, axis(1, 20, 6)};
  const AxesGrid displaced = displacedFrom(grid);
  const std::vector<Position> points = pointsOf(grid);
  const Samples samples(field, points);
  rayleigh::FftConvolution convolution(5, 7.5, 1.0 / 16, reach);
  std::vector<std::complex<float>> sums(points.size());
  const auto convolve = [&] {
    for (std::size_t m = 0; m < grid.z.size(); ++m)
      convolution.plane(grid.z[m], sums.data() + m * across.size() * across.size());
  };
  const Pressures pressures = field.on(grid, within(tolerance));
  const double peak = peakOf(pressures);
  const std::vector<double> seconds =
      secondsOf({[&] { field.on(grid, within(tolerance)); },
                 [&] { field.on(displaced, within(tolerance)); }, convolve});
  std::printf(
      "piston 5x7.5, volume of +-12 wavelengths in steps of 1/16, ns a point: Field of tolerance "
      "%.1e %.1f (largest error %.1e), without mirror images %.1f, FFT convolution %.1f (%.1e): "
      "convolution/Field %.2f, without mirror images %.2f\n",
      tolerance, nsAPoint(seconds[0], points.size()), samples.error(pressures, peak),
      nsAPoint(seconds[1], points.size()), nsAPoint(seconds[2], points.size()),
      samples.error(sums, peak), seconds[2] / seconds[0], seconds[2] / seconds[1]);
  std::fflush(stdout);
}
#endif

/// A piston that is turned a little about its axis, and a grid that is displaced, have no mirror
/// images on the grid; around the former, rows of samples have none either.
void mirrorImages(const char* name, const AxesGrid& grid) {
  const double angle = 1e-5, cosine = std::cos(angle), sine = std::sin(angle);
  Piston piston{10, 10};
  const Field field({piston}, 2 * pi);
  piston.axes = {{{cosine, sine, 0}, {-sine, cosine, 0}, {0, 0, 1}}};
  const Field turned({piston}, 2 * pi);
  const AxesGrid displaced = displacedFrom(grid);
  const std::vector<double> seconds =
      secondsOf({[&] { field.on(grid); }, [&] { turned.on(grid); }, [&] { field.on(displaced); }});
  std::printf(
      "symmetric %s, piston 10x10, tolerance 1e-4: without/with mirror images %.2f, without those "
      "of the grid alone %.2f\n",
      name, seconds[1] / seconds[0], seconds[2] / seconds[0]);
  std::fflush(stdout);
}

void costOfDigits() {
  const Field field({{10, 10}}, 2 * pi);
  const AxesGrid grid{axis(0, 7.5, 301), {0}, axis(0.25, 20, 501)};
  const std::vector<double> seconds =
      secondsOf({[&] { field.on(grid, within(1e-4)); }, [&] { field.on(grid, within(1e-9)); }});
  std::printf("piston 10x10: time of tolerance 1e-9 / 1e-4 %.2f\n", seconds[1] / seconds[0]);
  std::fflush(stdout);
}

}  // namespace

int main() {
  pistonfield::showProgress(false);
  printProcessor();
  onePiston(5, 7.5);
  onePiston(10, 10);
  onePiston(30, 15);
  onePiston(0.9, 16.7);
  array("the grid's step divides the pitch 0.3 mm", 0.3e-3);
  array("pitch 0.31 mm", 0.31e-3);
  scattered();
#if PISTONFIELD_BENCHMARK_FFT
  wideVolume();
#endif
  mirrorImages("plane", {axis(-10, 10, 301), {0}, axis(0.25, 20, 501)});
  mirrorImages("volume", {axis(-10, 10, 81), axis(-10, 10, 81), axis(0.25, 20, 31)});
  costOfDigits();
}
