#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <chrono>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "FastNearfield/GaussLegendre.h"
#include "core/Compiler.h"
#include "field/arrays.h"
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

using Numbers = nb::ndarray<nb::numpy, double>;

/// An array that owns the values.
Numbers arrayOf(std::vector<double> values, const std::vector<std::size_t>& shape) {
  auto* const owned = new std::vector<double>(std::move(values));
  const nb::capsule owner(
      owned, [](void* pointer) noexcept { delete static_cast<std::vector<double>*>(pointer); });
  return {owned->data(), shape.size(), shape.data(), owner};
}

Numbers rowsOf(const std::vector<Field::Piston>& pistons) {
  std::vector<double> rows;
  rows.reserve(16 * pistons.size());
  for (const Field::Piston& piston : pistons) {
    rows.insert(rows.end(), {piston.width, piston.height});
    rows.insert(rows.end(), piston.centre.begin(), piston.centre.end());
    for (const Position& axis : piston.axes) rows.insert(rows.end(), axis.begin(), axis.end());
    rows.insert(rows.end(), {piston.weight.real(), piston.weight.imag()});
  }
  return arrayOf(std::move(rows), {pistons.size(), 16});
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
    if (fraction >= 1 || Clock::now() < next) return;  // the caller reports the end
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

std::tuple<Numbers, Numbers> ruleOf(int order) {
  const auto length = static_cast<std::size_t>(order);
  std::vector<double> nodes(length), weights(length);
  legendre_compute(order, nodes.data(), weights.data());
  return {arrayOf(std::move(nodes), {length}), arrayOf(std::move(weights), {length})};
}

Position positionOf(const Reals& numbers) {
  const double* const p = numbers.data();
  return {p[0], p[1], p[2]};
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
  const nb::exception<FieldError> fieldError(module, "FieldError", PyExc_ValueError);
  module.def("pressures_at", &pressuresAt, "points"_a, "pistons"_a, "k"_a, "tolerance"_a, "order"_a,
             "progress"_a.none());
  module.def("pressures_on", &pressuresOn, "x"_a, "y"_a, "z"_a, "pistons"_a, "k"_a, "tolerance"_a,
             "order"_a, "progress"_a.none());
  module.def("order_for", &orderFor, "points"_a, "pistons"_a, "k"_a, "tolerance"_a);
  module.def(
      "linear_array",
      [](std::size_t count, double pitch, double width, double height) {
        return rowsOf(linearArray(count, pitch, width, height));
      },
      "count"_a, "pitch"_a, "width"_a, "height"_a);
  module.def(
      "matrix_array",
      [](std::size_t nx, std::size_t ny, double pitchX, double pitchY, double width,
         double height) {
        return rowsOf(matrixArray({nx, ny}, {pitchX, pitchY}, width, height));
      },
      "nx"_a, "ny"_a, "pitch_x"_a, "pitch_y"_a, "width"_a, "height"_a);
  module.def(
      "convex_array",
      [](std::size_t count, double pitch, double radius, double width, double height) {
        return rowsOf(convexArray(count, pitch, radius, width, height));
      },
      "count"_a, "pitch"_a, "radius"_a, "width"_a, "height"_a);
  module.def(
      "apodization",
      [](const std::string& name, const std::vector<std::size_t>& counts,
         std::optional<double> parameter) {
        std::vector<double> weights = apodization(name, counts, parameter);
        const std::size_t count = weights.size();
        return arrayOf(std::move(weights), {count});
      },
      "name"_a, "counts"_a, "parameter"_a.none());
  module.def(
      "steered",
      [](const PistonRows& pistons, const Reals& direction, double k) {
        return rowsOf(steered(pistonsOf(pistons), positionOf(direction), k));
      },
      "pistons"_a, "direction"_a, "k"_a);
  module.def(
      "focused",
      [](const PistonRows& pistons, const Reals& focus, double k) {
        return rowsOf(focused(pistonsOf(pistons), positionOf(focus), k));
      },
      "pistons"_a, "focus"_a, "k"_a);
  module.def("rule", &ruleOf, "order"_a);
  module.def("info", &info);
}
