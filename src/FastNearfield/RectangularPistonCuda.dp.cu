#include "FastNearfield/RectangularPistonCuda.dp.h"

#include <cstddef>
#include <string>

#include "FastNearfield/EvaluatePoints.h"
#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/LauncherSteps.h"
#include "core/DeviceLock.h"
#include "core/Progress.h"

// The texts of checks and of printed lines are fixed, misspellings included: users see them. So are
// the names of the tables in constant memory.

using namespace pistonfield;  // NOLINT(google-build-using-namespace): for the plain names below

namespace {
constexpr const char* sourceFile = "src/FastNearfield/RectangularPistonCuda.dp";
}

#if PISTONFIELD_DOUBLE

// The rule, in constant memory. setIntegratorWeightsSym_d writes it; pistonOf() hands it to the
// kernels. The "dp" belongs to the model's name.

__constant__ double global_dpRectangularPiston_double_x[mostNodes / 2];
__constant__ double global_dpRectangularPiston_double_w[mostNodes / 2];
__constant__ int global_dpRectangularPiston_double_N;

namespace {

cudaError_t writeSymbol(const std::string& symbol, const void* data, std::size_t size) {
  return writeToSymbol(
      {{"global_dpRectangularPiston_double_x", copyTo<global_dpRectangularPiston_double_x>},
       {"global_dpRectangularPiston_double_w", copyTo<global_dpRectangularPiston_double_w>},
       {"global_dpRectangularPiston_double_N", copyTo<global_dpRectangularPiston_double_N>}},
      symbol.c_str(), data, size);
}

}  // namespace

// The kernels. evaluatePoints() is defined in EvaluatePointsOnGpu.h for nvcc, and in
// EvaluatePointsInPacks.h for a C++ compiler.

namespace {

/// The piston with the loaded rule.
__device__ KernelPiston<double> pistonOf(double halfWidth, double halfHeight, double k) {
  return {halfWidth,
          halfHeight,
          k,
          {global_dpRectangularPiston_double_x, global_dpRectangularPiston_double_w,
           global_dpRectangularPiston_double_N}};
}

}  // namespace

__global__ void calculate(Complexd* d_array, int sx, int sy, int sz, double dx, double dy,
                          double dz, double halfWidth, double halfHeight, double k) {
  evaluatePoints(pistonOf(halfWidth, halfHeight, k), SteppedGrid<double>(sx, sy, sz, {dx, dy, dz}),
                 Pairs<double>{d_array});
}

__global__ void calculate_grid(Complexd* d_array, int sx, int sy, int sz, double transform00,
                               double transform01, double transform02, double transform03,
                               double transform10, double transform11, double transform12,
                               double transform13, double transform20, double transform21,
                               double transform22, double transform23, double halfWidth,
                               double halfHeight, double k) {
  const AffineMap<double> map{{transform00, transform01, transform02, transform03, transform10,
                               transform11, transform12, transform13, transform20, transform21,
                               transform22, transform23}};
  evaluatePoints(pistonOf(halfWidth, halfHeight, k), MappedGrid<double>(sx, sy, sz, map),
                 Pairs<double>{d_array});
}

__global__ void calculate_grid(double* d_arrayr, double* d_arrayi, int sx, int sy, int sz,
                               double transform00, double transform01, double transform02,
                               double transform03, double transform10, double transform11,
                               double transform12, double transform13, double transform20,
                               double transform21, double transform22, double transform23,
                               double halfWidth, double halfHeight, double k) {
  const AffineMap<double> map{{transform00, transform01, transform02, transform03, transform10,
                               transform11, transform12, transform13, transform20, transform21,
                               transform22, transform23}};
  evaluatePoints(pistonOf(halfWidth, halfHeight, k), MappedGrid<double>(sx, sy, sz, map),
                 Parts<double>{d_arrayr, d_arrayi});
}

__global__ void calculate_grid(Complexd* d_array, int sx, int sy, int sz, double* transform,
                               double halfWidth, double halfHeight, double k) {
  evaluatePoints(pistonOf(halfWidth, halfHeight, k),
                 MappedGrid<double>(sx, sy, sz, loadAffineMap(transform)), Pairs<double>{d_array});
}

__global__ void calculate_grid(double* d_arrayr, double* d_arrayi, int sx, int sy, int sz,
                               double* transform, double halfWidth, double halfHeight, double k) {
  evaluatePoints(pistonOf(halfWidth, halfHeight, k),
                 MappedGrid<double>(sx, sy, sz, loadAffineMap(transform)),
                 Parts<double>{d_arrayr, d_arrayi});
}

namespace {

// Selected by type, since calculate_grid is overloaded.
constexpr GridFromCentre<double>* fromCentre = calculate;
constexpr GridByValues<double>* byValues = calculate_grid;
constexpr GridByTransform<double>* byTransform = calculate_grid;
constexpr SplitGridByTransform<double>* splitByTransform = calculate_grid;

}  // namespace

#else

// A build without double precision has neither the symbols nor the kernels. Launching a kernel then
// fails with the runtime's error "invalid device function".

namespace {

cudaError_t writeSymbol(const std::string& symbol, const void* data, std::size_t size) {
  return writeToSymbol({}, symbol.c_str(), data, size);
}

constexpr GridFromCentre<double>* fromCentre = nullptr;
constexpr GridByValues<double>* byValues = nullptr;
constexpr GridByTransform<double>* byTransform = nullptr;
constexpr SplitGridByTransform<double>* splitByTransform = nullptr;

}  // namespace

#endif

void setIntegratorWeightsSym_d(const char* name, const double* x, const double* w, int N) {
  const DeviceLock lock;
  progress() << "set weights double" << std::endl;
  stageCheck("start setIntegratorWeightsSym", HERE);
  if (N < 1 || N > mostNodes) {
    fail("N <= 512 && N>0", HERE);
    return;  // there is no such table to read or to write
  }
  progress() << x[0] << std::endl;
  loadRule(HERE, writeSymbol, std::string("global_dp") + name + "_double_", x, w, N);
}

// The launchers.

void RectangularPiston_func_d(Complexd* data, int sx, int sy, int sz, double* transform, double a,
                              double b, double k) {
  stageCheck("pre do_calculate_grid", HERE);
  const HalfSides<double> sides = halfSides(a, b);
  PairResults<double> results(data, resultBytes(sx, sy, sz, sizeof *data), HERE);
  DeviceTransform<double> d_transform(transform, HERE);
  launchTimed(HERE, byTransform, regularGridShape(sx, sy, sz), blockShape, results.onDevice(), sx,
              sy, sz, d_transform.get(), sides.width, sides.height, k);
  stageCheck("calculate_grid", HERE);
  results.fetch();
  d_transform.free();
}

void RectangularPiston_func2_d(double* datar, double* datai, int sx, int sy, int sz,
                               double* transform, double a, double b, double k) {
  stageCheck("pre do_calculate_grid", HERE);
  const HalfSides<double> sides = halfSides(a, b);
  SplitResults<double> results(datar, datai, resultBytes(sx, sy, sz, sizeof(double)), HERE);
  DeviceTransform<double> d_transform(transform, HERE);
  launchTimed(HERE, splitByTransform, regularGridShape(sx, sy, sz), blockShape,
              results.realOnDevice(), results.imaginaryOnDevice(), sx, sy, sz, d_transform.get(),
              sides.width, sides.height, k);
  stageCheck("calculate_grid", HERE);
  results.fetch();
  d_transform.free();
}

void do_calculate_grid_d(Complexd* data, int sx, int sy, int sz, double transform00,
                         double transform01, double transform02, double transform03,
                         double transform10, double transform11, double transform12,
                         double transform13, double transform20, double transform21,
                         double transform22, double transform23, double a, double b, double k) {
  calculateByValues<double>(
      HERE, byValues, data, sx, sy, sz,
      {transform00, transform01, transform02, transform03, transform10, transform11, transform12,
       transform13, transform20, transform21, transform22, transform23},
      halfSides(a, b), k);
}

void do_calculate_d(Complexd* data, int sx, int sy, int sz, double dx, double dy, double dz,
                    double a, double b, double k) {
  calculateFromCentre<double>(HERE, fromCentre, data, sx, sy, sz, dx, dy, dz, halfSides(a, b), k);
}
