#include <cmath>
#include <complex>
#include <cstddef>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Calls.h"
#include "FastNearfield/GaussLegendre.h"
#include "core/Compiler.h"
#include "field/arrays.h"
#include "field/beam.h"
#include "field/field.h"
#include "field/lens.h"
#include "field/order.h"
#include "lanes/InstructionSet.h"
#include "parallel/Cores.h"
#include "version.h"

// The functions for fields, arrays and rules. Those for pulses are in pulse.cpp.

namespace pistonfield {
namespace {

/// Whether pressures take a few milliseconds at most, by a rough count of nodes. To start a thread
/// takes longer than the pressure at one point.
bool isShort(double points, const double* pistons, std::size_t pistonCount,
             std::complex<double> k) {
  double nodes = 0;
  for (std::size_t n = 0; n < pistonCount; ++n) {
    const double *const width = pistons + n * numbersOfPiston, *const height = width + 1;
    nodes += 64 + std::abs(k) * (*width + *height);
  }
  return points * nodes < 1e6;
}

/// Sets the pressures that compute(field, options, report) returns for the pistons.
template <class Compute>
bool runField(Work& work, bool brief, const double* pistons, std::size_t pistonCount,
              std::complex<double> k, double tolerance, int order, Compute compute) {
  return work.run(brief, [=, &work] {
    FieldOptions options;
    options.tolerance = tolerance;
    options.order = order;
    options.progress = work.progress();
    FieldReport report;
    auto pressures = compute(Field(pistonsOf(pistons, pistonCount), k), options, &report);
    work.setResult(std::move(pressures), report);
  });
}

}  // namespace

extern "C" {

/// Returns nullptr if there is too little memory.
PISTONFIELD_EXPORT Work* pistonfield_new() { return new (std::nothrow) Work; }

/// Stops it, too.
PISTONFIELD_EXPORT void pistonfield_delete(Work* work) { delete work; }

PISTONFIELD_EXPORT void pistonfield_stop(Work* work) { work->stop(); }

/// Returns whether the work ended within this time. Writes the fraction that is done.
PISTONFIELD_EXPORT bool pistonfield_wait(Work* work, double seconds, double* fraction) {
  const bool hasEnded = work->wait(seconds);
  *fraction = work->fraction();
  return hasEnded;
}

// These three return whether the work has ended. Otherwise the caller waits for it, and keeps the
// arrays until then.

PISTONFIELD_EXPORT bool pistonfield_at(Work* work, const double* points, std::size_t count,
                                       const double* pistons, std::size_t pistonCount, double kRe,
                                       double kIm, double tolerance, int order) {
  const std::complex<double> k(kRe, kIm);
  const bool brief = isShort(static_cast<double>(count), pistons, pistonCount, k);
  return runField(*work, brief, pistons, pistonCount, k, tolerance, order,
                  [=](const Field& field, const FieldOptions& options, FieldReport* report) {
                    return field.at(positionsOf(points), count, options, report);
                  });
}

PISTONFIELD_EXPORT bool pistonfield_on(Work* work, const double* x, std::size_t nx, const double* y,
                                       std::size_t ny, const double* z, std::size_t nz,
                                       const double* pistons, std::size_t pistonCount, double kRe,
                                       double kIm, double tolerance, int order) {
  const std::complex<double> k(kRe, kIm);
  const double count = static_cast<double>(nx) * static_cast<double>(ny) * static_cast<double>(nz);
  return runField(*work, isShort(count, pistons, pistonCount, k), pistons, pistonCount, k,
                  tolerance, order,
                  [=](const Field& field, const FieldOptions& options, FieldReport* report) {
                    const AxesGrid grid{{x, x + nx}, {y, y + ny}, {z, z + nz}};
                    return field.on(grid, options, report);
                  });
}

/// Sets the order and its error.
PISTONFIELD_EXPORT bool pistonfield_order(Work* work, const double* points, std::size_t count,
                                          const double* pistons, std::size_t pistonCount,
                                          double kRe, double kIm, double tolerance) {
  return work->run(false, [=] {
    const Field field(pistonsOf(pistons, pistonCount), {kRe, kIm});
    const auto [order, error] =
        sufficientOrder(field, positionsOf(points), count, tolerance, work->progress());
    work->setResult({static_cast<double>(order), error});
  });
}

PISTONFIELD_EXPORT void pistonfield_linear_array(Work* work, std::size_t count, double pitch,
                                                 double width, double height) {
  runShort(*work, [=] { return rowsOf(linearArray(count, pitch, width, height)); });
}

PISTONFIELD_EXPORT void pistonfield_matrix_array(Work* work, std::size_t nx, std::size_t ny,
                                                 double pitchX, double pitchY, double width,
                                                 double height) {
  runShort(*work, [=] { return rowsOf(matrixArray({nx, ny}, {pitchX, pitchY}, width, height)); });
}

PISTONFIELD_EXPORT void pistonfield_convex_array(Work* work, std::size_t count, double pitch,
                                                 double radius, double width, double height) {
  runShort(*work, [=] { return rowsOf(convexArray(count, pitch, radius, width, height)); });
}

/// A window has a default for a parameter that is nullptr.
PISTONFIELD_EXPORT void pistonfield_apodization(Work* work, const char* name,
                                                const std::size_t* counts, std::size_t directions,
                                                const double* parameter) {
  runShort(*work, [=] {
    return apodization(name, {counts, counts + directions},
                       parameter ? std::optional<double>(*parameter) : std::nullopt);
  });
}

PISTONFIELD_EXPORT void pistonfield_steered(Work* work, const double* pistons, std::size_t count,
                                            const double* direction, double kRe, double kIm) {
  runShort(*work, [=] {
    return rowsOf(steered(pistonsOf(pistons, count), *positionsOf(direction), {kRe, kIm}));
  });
}

PISTONFIELD_EXPORT void pistonfield_focused(Work* work, const double* pistons, std::size_t count,
                                            const double* focus, double kRe, double kIm) {
  runShort(*work, [=] {
    return rowsOf(focused(pistonsOf(pistons, count), *positionsOf(focus), {kRe, kIm}));
  });
}

PISTONFIELD_EXPORT void pistonfield_lensed(Work* work, const double* pistons, std::size_t count,
                                           double focus, double kRe, double kIm, double tolerance) {
  runShort(*work, [=] {
    return rowsOf(lensed(pistonsOf(pistons, count), focus, {kRe, kIm}, tolerance));
  });
}

/// Sets five numbers for each of `count` lines along x: peak, position, width, left and right edge.
/// A pressure is two numbers.
PISTONFIELD_EXPORT void pistonfield_beams(Work* work, const double* x, std::size_t nx,
                                          const double* p, std::size_t count, double drop) {
  runShort(*work, [=] {
    const auto* const pressures = reinterpret_cast<const std::complex<double>*>(p);
    std::vector<double> numbers;
    for (const Beam& beam : beams({x, x + nx}, pressures, count, drop))
      numbers.insert(numbers.end(), {beam.peak, beam.position, beam.width, beam.left, beam.right});
    return numbers;
  });
}

/// Sets the nodes, and then the weights.
PISTONFIELD_EXPORT void pistonfield_rule(Work* work, int order) {
  runShort(*work, [=] {
    const auto length = static_cast<std::size_t>(order);
    std::vector<double> numbers(2 * length);
    legendre_compute(order, numbers.data(), numbers.data() + length);
    return numbers;
  });
}

PISTONFIELD_EXPORT const char* pistonfield_version() { return PISTONFIELD_VERSION; }
PISTONFIELD_EXPORT const char* pistonfield_revision() { return PISTONFIELD_COMMIT; }
PISTONFIELD_EXPORT const char* pistonfield_compiler() {
  static const std::string name = compiler();
  return name.c_str();
}
PISTONFIELD_EXPORT const char* pistonfield_instructions() { return nameOf(instructionSet()); }
PISTONFIELD_EXPORT unsigned pistonfield_threads() { return parallel::cores(); }

}  // extern "C"
}  // namespace pistonfield
