#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>

#include <chrono>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <tuple>
#include <utility>
#include <vector>

#include "FastNearfield/GaussLegendre.h"
#include "core/Compiler.h"
#include "field/field.h"
#include "field/order.h"
#include "lanes/InstructionSet.h"
#include "parallel/Cores.h"
#include "version.h"

// pistonfield._core: Field for NumPy's arrays, which the functions of the package call. They have
// checked types and shapes.

namespace nb = nanobind;
using namespace nb::literals;

namespace pistonfield {
namespace {

using Reals = nb::ndarray<const double, nb::ndim<1>, nb::c_contig, nb::device::cpu>;
using PointRows = nb::ndarray<const double, nb::shape<-1, 3>, nb::c_contig, nb::device::cpu>;
/// A piston a row: width, height, centre, the directions of its own x, y and z, and the real and
/// the imaginary part of the weight.
using PistonRows = nb::ndarray<const double, nb::shape<-1, 16>, nb::c_contig, nb::device::cpu>;
using Pressures = nb::ndarray<nb::numpy, std::complex<double>>;
/// What a call used: orders, single and double precision, nodes and bound.
using Used = std::tuple<int, int, bool, bool, double, double>;

std::vector<Field::Piston> pistonsOf(const PistonRows& rows) {
  std::vector<Field::Piston> pistons(rows.shape(0));
  const double* row = rows.data();
  for (Field::Piston& piston : pistons) {
    piston.width = row[0];
    piston.height = row[1];
    for (std::size_t n = 0; n < 3; ++n) piston.centre[n] = row[2 + n];
    for (std::size_t n = 0; n < 9; ++n) piston.axes[n / 3][n % 3] = row[5 + n];
    piston.weight = {row[14], row[15]};
    row += 16;
  }
  return pistons;
}

std::vector<double> axisOf(const Reals& axis) { return {axis.data(), axis.data() + axis.shape(0)}; }

/// An array that owns the values, the first axis varying fastest.
Pressures arrayOf(std::vector<std::complex<double>> values, std::vector<std::size_t> shape) {
  auto* const owned = new std::vector<std::complex<double>>(std::move(values));
  const nb::capsule owner(owned, [](void* pointer) noexcept {
    delete static_cast<std::vector<std::complex<double>>*>(pointer);
  });
  std::vector<std::int64_t> strides;
  std::int64_t stride = 1;
  for (const std::size_t length : shape) {
    strides.push_back(stride);
    stride *= static_cast<std::int64_t>(length);
  }
  return {owned->data(), shape.size(), shape.data(), owner, strides.data()};
}

/// Between two calls of Python's code.
constexpr auto interval = std::chrono::milliseconds(50);

/// Lets Python handle its signals, such as Ctrl-C, and show progress while a Field computes without
/// the interpreter's lock.
std::function<void(double)> watch(const nb::object& progress) {
  using Clock = std::chrono::steady_clock;
  return [&progress, next = Clock::now() + interval](double fraction) mutable {
    if (Clock::now() < next) return;
    const nb::gil_scoped_acquire lock;
    if (PyErr_CheckSignals() != 0) throw nb::python_error();
    if (!progress.is_none()) progress(fraction);
    next = Clock::now() + interval;
  };
}

FieldOptions optionsOf(double tolerance, int order, const nb::object& progress) {
  FieldOptions options;
  options.tolerance = tolerance;
  options.order = order;
  options.progress = watch(progress);
  return options;
}

template <class Compute>
std::tuple<Pressures, Used> computed(const nb::object& progress, std::vector<std::size_t> shape,
                                     const Compute& compute) {
  FieldReport report;
  std::vector<std::complex<double>> values;
  {
    const nb::gil_scoped_release unlocked;
    values = compute(&report);
  }
  if (!progress.is_none()) progress(1.0);
  return {arrayOf(std::move(values), std::move(shape)),
          Used(report.leastOrder, report.mostOrder, report.single, report.precise, report.nodes,
               report.bound)};
}

const Position* positionsOf(const PointRows& points) {
  static_assert(sizeof(Position) == 3 * sizeof(double));
  return reinterpret_cast<const Position*>(points.data());
}

std::tuple<Pressures, Used> pressuresAt(const PointRows& points, const PistonRows& pistons,
                                        double k, double tolerance, int order,
                                        const nb::object& progress) {
  const Field field(pistonsOf(pistons), k);
  const FieldOptions options = optionsOf(tolerance, order, progress);
  return computed(progress, {points.shape(0)}, [&](FieldReport* report) {
    return field.at(positionsOf(points), points.shape(0), options, report);
  });
}

std::tuple<Pressures, Used> pressuresOn(const Reals& x, const Reals& y, const Reals& z,
                                        const PistonRows& pistons, double k, double tolerance,
                                        int order, const nb::object& progress) {
  const AxesGrid grid{axisOf(x), axisOf(y), axisOf(z)};
  const Field field(pistonsOf(pistons), k);
  const FieldOptions options = optionsOf(tolerance, order, progress);
  return computed(progress, {grid.x.size(), grid.y.size(), grid.z.size()},
                  [&](FieldReport* report) { return field.on(grid, options, report); });
}

std::tuple<int, double> orderFor(const PointRows& points, const PistonRows& pistons, double k,
                                 double tolerance) {
  const Field field(pistonsOf(pistons), k);
  const nb::object silent = nb::none();
  const auto progress = watch(silent);
  const nb::gil_scoped_release unlocked;
  const auto [order, error] =
      sufficientOrder(field, positionsOf(points), points.shape(0), tolerance, progress);
  return {order, error};
}

using Rule = nb::ndarray<nb::numpy, double, nb::ndim<1>>;

std::tuple<Rule, Rule> ruleOf(int order) {
  const auto length = static_cast<std::size_t>(order);
  auto* const both = new double[2 * length];
  const nb::capsule owner(both,
                          [](void* pointer) noexcept { delete[] static_cast<double*>(pointer); });
  legendre_compute(order, both, both + length);
  return {Rule(both, {length}, owner), Rule(both + length, {length}, owner)};
}

nb::typed<nb::dict, nb::str, nb::object> info() {
  nb::typed<nb::dict, nb::str, nb::object> facts;
  facts["version"] = PISTONFIELD_VERSION;
  facts["revision"] = PISTONFIELD_COMMIT;
  facts["compiler"] = compiler();
  facts["instructions"] = nameOf(instructionSet());
  facts["threads"] = parallel::cores();
  return facts;
}

}  // namespace
}  // namespace pistonfield

NB_MODULE(_core, module) {
  using namespace pistonfield;
  nb::exception<FieldError>(module, "FieldError", PyExc_ValueError);
  module.def("pressures_at", &pressuresAt, "points"_a, "pistons"_a, "k"_a, "tolerance"_a, "order"_a,
             "progress"_a.none());
  module.def("pressures_on", &pressuresOn, "x"_a, "y"_a, "z"_a, "pistons"_a, "k"_a, "tolerance"_a,
             "order"_a, "progress"_a.none());
  module.def("order_for", &orderFor, "points"_a, "pistons"_a, "k"_a, "tolerance"_a);
  module.def("rule", &ruleOf, "order"_a);
  module.def("info", &info);
}
