#include "FastNearfield/RectangularPistonCuda.dp.h"

#include <cstddef>
#include <iostream>
#include <string>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/KernelThreads.h"
#include "FastNearfield/LaunchShape.h"
#include "FastNearfield/LaunchTiming.h"
#if PISTONFIELD_DOUBLE
#include "FastNearfield/RectangularPistonKernels.dp.h"
#endif
#include "core/CudaCheck.h"
#include "core/CudaToday.h"
#include "core/DeviceBuffer.h"
#include "core/DeviceLock.h"
#include "core/LoadedRules.h"
#include "core/Progress.h"

using pistonfield::blockShape;
using pistonfield::callCheck;
using pistonfield::Complexd;
using pistonfield::DeviceBuffer;
using pistonfield::gridBytes;
using pistonfield::half;
using pistonfield::launch;
using pistonfield::launchTimed;
using pistonfield::progress;
using pistonfield::regularGridShape;
using pistonfield::stageCheck;

namespace {
constexpr const char* sourceFile = "src/FastNearfield/RectangularPistonCuda.dp";
}

#if PISTONFIELD_DOUBLE

using pistonfield::AffineMap;
using pistonfield::copyTo;
using pistonfield::KernelPiston;
using pistonfield::loadAffineMap;
using pistonfield::MappedGrid;
using pistonfield::Pairs;
using pistonfield::Parts;
using pistonfield::SteppedGrid;

// The rule, in constant memory. The "dp" belongs to the model's name.

__constant__ double global_dpRectangularPiston_double_x[256];
__constant__ double global_dpRectangularPiston_double_w[256];
__constant__ int global_dpRectangularPiston_double_N;

namespace {

cudaError_t writeSymbol(const std::string& symbol, const void* data, std::size_t size) {
  return pistonfield::cudaMemcpyToSymbol(
      {{"global_dpRectangularPiston_double_x", copyTo<global_dpRectangularPiston_double_x>},
       {"global_dpRectangularPiston_double_w", copyTo<global_dpRectangularPiston_double_w>},
       {"global_dpRectangularPiston_double_N", copyTo<global_dpRectangularPiston_double_N>}},
      symbol.c_str(), data, size);
}

}  // namespace

// The kernels.

namespace {

__device__ KernelPiston<double> pistonOf(double a, double b, double k) {
  return {a,
          b,
          k,
          {global_dpRectangularPiston_double_x, global_dpRectangularPiston_double_w,
           global_dpRectangularPiston_double_N}};
}

}  // namespace

__global__ void calculate(Complexd* d_array, int sx, int sy, int sz, double dx, double dy,
                          double dz, double a, double b, double k) {
  evaluate(pistonOf(a, b, k), SteppedGrid<double>(sx, sy, sz, {dx, dy, dz}),
           Pairs<double>{d_array});
}

__global__ void calculate_grid(Complexd* d_array, int sx, int sy, int sz, double transform00,
                               double transform01, double transform02, double transform03,
                               double transform10, double transform11, double transform12,
                               double transform13, double transform20, double transform21,
                               double transform22, double transform23, double a, double b,
                               double k) {
  const AffineMap<double> map{{transform00, transform01, transform02, transform03, transform10,
                               transform11, transform12, transform13, transform20, transform21,
                               transform22, transform23}};
  evaluate(pistonOf(a, b, k), MappedGrid<double>(sx, sy, sz, map), Pairs<double>{d_array});
}

__global__ void calculate_grid(double* d_arrayr, double* d_arrayi, int sx, int sy, int sz,
                               double transform00, double transform01, double transform02,
                               double transform03, double transform10, double transform11,
                               double transform12, double transform13, double transform20,
                               double transform21, double transform22, double transform23, double a,
                               double b, double k) {
  const AffineMap<double> map{{transform00, transform01, transform02, transform03, transform10,
                               transform11, transform12, transform13, transform20, transform21,
                               transform22, transform23}};
  evaluate(pistonOf(a, b, k), MappedGrid<double>(sx, sy, sz, map),
           Parts<double>{d_arrayr, d_arrayi});
}

__global__ void calculate_grid(Complexd* d_array, int sx, int sy, int sz, double* transform,
                               double a, double b, double k) {
  evaluate(pistonOf(a, b, k), MappedGrid<double>(sx, sy, sz, loadAffineMap(transform)),
           Pairs<double>{d_array});
}

__global__ void calculate_grid(double* d_arrayr, double* d_arrayi, int sx, int sy, int sz,
                               double* transform, double a, double b, double k) {
  evaluate(pistonOf(a, b, k), MappedGrid<double>(sx, sy, sz, loadAffineMap(transform)),
           Parts<double>{d_arrayr, d_arrayi});
}

#else

// A build without double precision has no such symbols, and no kernels: to launch one is the
// runtime's "invalid device function".

namespace {

cudaError_t writeSymbol(const std::string& symbol, const void* data, std::size_t size) {
  return pistonfield::cudaMemcpyToSymbol({}, symbol.c_str(), data, size);
}

constexpr std::nullptr_t calculate = nullptr;
constexpr std::nullptr_t calculate_grid = nullptr;

}  // namespace

#endif

void setIntegratorWeightsSym_d(const char* name, const double* x, const double* w, int N) {
  const pistonfield::DeviceLock lock;
  progress() << "set weights double" << std::endl;
  stageCheck("start setIntegratorWeightsSym", HERE);
  if (N < 1 || N > 512) {
    pistonfield::fail("N <= 512 && N>0", HERE);
    return;  // there is no such table to read or to write
  }
  const std::size_t datasize = static_cast<std::size_t>((N + 1) / 2) * sizeof(double);
  const std::string prefix = std::string("global_dp") + name + "_double_";

  progress() << x[0] << std::endl;
  pistonfield::forgetRule(pistonfield::Precision::DOUBLE);
  const cudaError_t err = writeSymbol(prefix + "x", x, datasize);
  if (err == cudaErrorInvalidSymbol) {  // what a device image without double precision lacks
    std::cerr << "Support for double not found" << std::endl;
    cudaGetLastError();
    return;
  }
  bool written = callCheck(err, "err", HERE);
  written &= callCheck(writeSymbol(prefix + "w", w, datasize),
                       "cudaMemcpyToSymbol( buf, data_w, datasize )", HERE);
  written &= callCheck(writeSymbol(prefix + "N", &N, sizeof(int)),
                       "cudaMemcpyToSymbol( buf, (void*)&N, sizeof(int) )", HERE);
  if (written) pistonfield::noteRule(pistonfield::Precision::DOUBLE);
  stageCheck("end setIntegratorWeightsSym", HERE);
}

// The launchers. Each hands the kernel half the side lengths, exchanged: the kernel's a, along x,
// is b/2, and its b, along y, is a/2.

namespace {

void uploadTransform(DeviceBuffer<double>& d_transform, const double* transform) {
  callCheck(d_transform.allocate(16 * sizeof(double)),
            "cudaMalloc((void**)&d_transform, 16*sizeof(double))", HERE);
  callCheck(cudaMemcpy(d_transform.get(), transform, 16 * sizeof(double), cudaMemcpyHostToDevice),
            "cudaMemcpy( d_transform, transform, 16*sizeof(double), cudaMemcpyHostToDevice )",
            HERE);
}

}  // namespace

void RectangularPiston_func_d(Complexd* data, int sx, int sy, int sz, double* transform, double a,
                              double b, double k) {
  stageCheck("pre do_calculate_grid", HERE);
  const std::size_t datasize = gridBytes(sx, sy, sz, sizeof(Complexd));
  DeviceBuffer<Complexd> d_array;
  callCheck(d_array.allocate(datasize), "cudaMalloc((void**)&d_array, datasize)", HERE);
  DeviceBuffer<double> d_transform;
  uploadTransform(d_transform, transform);
  launchTimed(HERE, calculate_grid, regularGridShape(sx, sy, sz), blockShape, d_array.get(), sx, sy,
              sz, d_transform.get(), half(b), half(a), k);
  stageCheck("calculate_grid", HERE);
  callCheck(cudaMemcpy(data, d_array.get(), datasize, cudaMemcpyDeviceToHost),
            "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )", HERE);
  callCheck(d_array.free(), "cudaFree(d_array)", HERE);
  callCheck(d_transform.free(), "cudaFree(d_transform)", HERE);
}

void RectangularPiston_func2_d(double* datar, double* datai, int sx, int sy, int sz,
                               double* transform, double a, double b, double k) {
  stageCheck("pre do_calculate_grid", HERE);
  const std::size_t datasize = gridBytes(sx, sy, sz, sizeof(double));
  DeviceBuffer<double> d_arrayr;
  callCheck(d_arrayr.allocate(datasize), "cudaMalloc((void**)&d_arrayr, datasize)", HERE);
  DeviceBuffer<double> d_arrayi;
  callCheck(d_arrayi.allocate(datasize), "cudaMalloc((void**)&d_arrayi, datasize)", HERE);
  DeviceBuffer<double> d_transform;
  uploadTransform(d_transform, transform);
  launchTimed(HERE, calculate_grid, regularGridShape(sx, sy, sz), blockShape, d_arrayr.get(),
              d_arrayi.get(), sx, sy, sz, d_transform.get(), half(b), half(a), k);
  stageCheck("calculate_grid", HERE);
  callCheck(cudaMemcpy(datar, d_arrayr.get(), datasize, cudaMemcpyDeviceToHost),
            "cudaMemcpy( &datar[0], d_arrayr, datasize, cudaMemcpyDeviceToHost )", HERE);
  callCheck(cudaMemcpy(datai, d_arrayi.get(), datasize, cudaMemcpyDeviceToHost),
            "cudaMemcpy( &datai[0], d_arrayi, datasize, cudaMemcpyDeviceToHost )", HERE);
  callCheck(d_arrayr.free(), "cudaFree(d_arrayr)", HERE);
  callCheck(d_arrayi.free(), "cudaFree(d_arrayi)", HERE);
  callCheck(d_transform.free(), "cudaFree(d_transform)", HERE);
}

void do_calculate_grid_d(Complexd* data, int sx, int sy, int sz, double transform00,
                         double transform01, double transform02, double transform03,
                         double transform10, double transform11, double transform12,
                         double transform13, double transform20, double transform21,
                         double transform22, double transform23, double a, double b, double k) {
  stageCheck("pre do_calculate_grid", HERE);
  const std::size_t datasize = gridBytes(sx, sy, sz, sizeof(Complexd));
  DeviceBuffer<Complexd> d_array;
  callCheck(d_array.allocate(datasize), "cudaMalloc((void**)&d_array, datasize)", HERE);
  launchTimed(HERE, calculate_grid, regularGridShape(sx, sy, sz), blockShape, d_array.get(), sx, sy,
              sz, transform00, transform01, transform02, transform03, transform10, transform11,
              transform12, transform13, transform20, transform21, transform22, transform23, half(b),
              half(a), k);
  stageCheck("calculate_grid", HERE);
  callCheck(cudaMemcpy(data, d_array.get(), datasize, cudaMemcpyDeviceToHost),
            "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )", HERE);
  callCheck(d_array.free(), "cudaFree(d_array)", HERE);
}

void do_calculate_d(Complexd* data, int sx, int sy, int sz, double dx, double dy, double dz,
                    double a, double b, double k) {
  stageCheck("pre do_calculate", HERE);
  const std::size_t datasize = gridBytes(sx, sy, sz, sizeof(Complexd));
  DeviceBuffer<Complexd> d_array;
  callCheck(d_array.allocate(datasize), "cudaMalloc((void**)&d_array, datasize)", HERE);
  launch(calculate, regularGridShape(sx, sy, sz), blockShape, d_array.get(), sx, sy, sz, dx, dy, dz,
         half(b), half(a), k);
  stageCheck("calculate", HERE);
  callCheck(cudaMemcpy(data, d_array.get(), datasize, cudaMemcpyDeviceToHost),
            "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )", HERE);
  callCheck(d_array.free(), "cudaFree(d_array)", HERE);
}
