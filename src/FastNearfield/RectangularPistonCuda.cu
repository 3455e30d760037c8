#include "FastNearfield/RectangularPistonCuda.h"

#include <cstddef>
#include <string>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/KernelThreads.h"
#include "FastNearfield/LaunchPieces.h"
#include "FastNearfield/LaunchShape.h"
#include "FastNearfield/LaunchTiming.h"
#include "FastNearfield/RectangularPistonKernels.h"
#include "core/CudaCheck.h"
#include "core/CudaToday.h"
#include "core/DeviceBuffer.h"
#include "core/DeviceLock.h"
#include "core/LoadedRules.h"
#include "core/Progress.h"

using pistonfield::AffineMap;
using pistonfield::AxesGrid;
using pistonfield::blockShape;
using pistonfield::callCheck;
using pistonfield::Complex;
using pistonfield::copyTo;
using pistonfield::DeviceBuffer;
using pistonfield::gridBytes;
using pistonfield::half;
using pistonfield::KernelPiston;
using pistonfield::launch;
using pistonfield::launchInPieces;
using pistonfield::launchTimed;
using pistonfield::loadAffineMap;
using pistonfield::MappedGrid;
using pistonfield::Pairs;
using pistonfield::Parts;
using pistonfield::PointList;
using pistonfield::pointListShape;
using pistonfield::progress;
using pistonfield::regularGridShape;
using pistonfield::stageCheck;
using pistonfield::SteppedGrid;
using pistonfield::timed;

namespace {
constexpr const char* sourceFile = "src/FastNearfield/RectangularPistonCuda";
}

// The rule, in constant memory.

__constant__ float global_RectangularPiston_float_x[256];
__constant__ float global_RectangularPiston_float_w[256];
__constant__ int global_RectangularPiston_float_N;

namespace {

/// The same on the host: how long a point takes.
int loadedOrder = 0;

cudaError_t writeSymbol(const std::string& symbol, const void* data, std::size_t size) {
  return pistonfield::cudaMemcpyToSymbol(
      {{"global_RectangularPiston_float_x", copyTo<global_RectangularPiston_float_x>},
       {"global_RectangularPiston_float_w", copyTo<global_RectangularPiston_float_w>},
       {"global_RectangularPiston_float_N", copyTo<global_RectangularPiston_float_N>}},
      symbol.c_str(), data, size);
}

}  // namespace

void setIntegratorWeightsSym(const char* name, const float* x, const float* w, int N) {
  const pistonfield::DeviceLock lock;
  progress() << "set weights float" << std::endl;
  stageCheck("start setIntegratorWeightsSym", HERE);
  if (N >= 1) progress() << x[0] << std::endl;
  if (N < 1 || N > 512) {
    pistonfield::fail("N <= 512 && N>0", HERE);
    return;  // there is no such table to read or to write
  }
  const std::size_t datasize = static_cast<std::size_t>((N + 1) / 2) * sizeof(float);
  const std::string prefix = std::string("global_") + name + "_float_";

  progress() << "symbol: \"" << prefix + "x"
             << "\"" << std::endl;
  pistonfield::forgetRule(pistonfield::Precision::SINGLE);
  bool written = callCheck(writeSymbol(prefix + "x", x, datasize),
                           "cudaMemcpyToSymbol( buf, data_x, datasize )", HERE);
  written &= callCheck(writeSymbol(prefix + "w", w, datasize),
                       "cudaMemcpyToSymbol( buf, data_w, datasize )", HERE);
  written &= callCheck(writeSymbol(prefix + "N", &N, sizeof(int)),
                       "cudaMemcpyToSymbol( buf, (void*)&N, sizeof(int) )", HERE);
  loadedOrder = N;
  if (written) pistonfield::noteRule(pistonfield::Precision::SINGLE);
  stageCheck("end setIntegratorWeightsSym", HERE);
}

// The kernels.

namespace {

__device__ KernelPiston<float> pistonOf(float a, float b, float k) {
  return {a,
          b,
          k,
          {global_RectangularPiston_float_x, global_RectangularPiston_float_w,
           global_RectangularPiston_float_N}};
}

}  // namespace

__global__ void calculate(Complex* d_array, int sx, int sy, int sz, float dx, float dy, float dz,
                          float a, float b, float k) {
  evaluate(pistonOf(a, b, k), SteppedGrid<float>(sx, sy, sz, {dx, dy, dz}), Pairs<float>{d_array});
}

__global__ void calculate_grid(Complex* d_array, int sx, int sy, int sz, float transform00,
                               float transform01, float transform02, float transform03,
                               float transform10, float transform11, float transform12,
                               float transform13, float transform20, float transform21,
                               float transform22, float transform23, float a, float b, float k) {
  const AffineMap<float> map{{transform00, transform01, transform02, transform03, transform10,
                              transform11, transform12, transform13, transform20, transform21,
                              transform22, transform23}};
  evaluate(pistonOf(a, b, k), MappedGrid<float>(sx, sy, sz, map), Pairs<float>{d_array});
}

__global__ void calculate_grid(float* d_arrayr, float* d_arrayi, int sx, int sy, int sz,
                               float transform00, float transform01, float transform02,
                               float transform03, float transform10, float transform11,
                               float transform12, float transform13, float transform20,
                               float transform21, float transform22, float transform23, float a,
                               float b, float k) {
  const AffineMap<float> map{{transform00, transform01, transform02, transform03, transform10,
                              transform11, transform12, transform13, transform20, transform21,
                              transform22, transform23}};
  evaluate(pistonOf(a, b, k), MappedGrid<float>(sx, sy, sz, map), Parts<float>{d_arrayr, d_arrayi});
}

__global__ void calculate_grid(Complex* d_array, int sx, int sy, int sz, float* transform, float a,
                               float b, float k) {
  evaluate(pistonOf(a, b, k), MappedGrid<float>(sx, sy, sz, loadAffineMap(transform)),
           Pairs<float>{d_array});
}

__global__ void calculate_grid(float* d_arrayr, float* d_arrayi, int sx, int sy, int sz,
                               float* transform, float a, float b, float k) {
  evaluate(pistonOf(a, b, k), MappedGrid<float>(sx, sy, sz, loadAffineMap(transform)),
           Parts<float>{d_arrayr, d_arrayi});
}

__global__ void calculate_grid_unstructured(Complex* d_array, int nbPos, float* pos, float a,
                                            float b, float k) {
  evaluate(pistonOf(a, b, k), PointList<float>(nbPos, pos), Pairs<float>{d_array});
}

__global__ void calculate_grid_structured(Complex* d_array, int sx, int sy, int sz, float* posx,
                                          float* posy, float* posz, float a, float b, float k) {
  evaluate(pistonOf(a, b, k), AxesGrid<float>(sx, sy, sz, {posx, posy, posz}),
           Pairs<float>{d_array});
}

// The launchers. Each hands the kernel half the side lengths, exchanged: the kernel's a, along x,
// is b/2, and its b, along y, is a/2.

int do_timing = 0;
double global_time = 0;

namespace {

void printTransform(const char* label, const float* transform) {
  progress() << label << transform[0] << " " << transform[1] << " " << transform[2] << " "
             << transform[3] << " " << transform[4] << std::endl;
}

void printAllocation(std::size_t datasize) {
  progress() << "allocating " << datasize << " bytes" << std::endl;
}

void uploadTransform(DeviceBuffer<float>& d_transform, const float* transform) {
  callCheck(d_transform.allocate(16 * sizeof(float)),
            "cudaMalloc((void**)&d_transform, 16*sizeof(float))", HERE);
  callCheck(cudaMemcpy(d_transform.get(), transform, 16 * sizeof(float), cudaMemcpyHostToDevice),
            "cudaMemcpy( d_transform, transform, 16*sizeof(float), cudaMemcpyHostToDevice )", HERE);
}

cudaError_t launchPointList(Complex* d_array, int nbPos, float* d_pos, float a, float b, float k) {
  return launch<Complex*, int, float*, float, float, float>(
      calculate_grid_unstructured, pointListShape(nbPos), blockShape, d_array, nbPos, d_pos,
      half(b), half(a), k);
}

/// All that is done with a list of points on the device; `launches` launch the kernel for it.
template <class Launches>
void evaluatePointList(int nbPos, const Launches& launches) {
  stageCheck("pre RectangularPison_func_device", HERE);
  const dim3 grid = pointListShape(nbPos);
  progress() << "nbPos" << nbPos << std::endl;
  progress() << "grid: " << grid.x << " " << grid.y << " " << grid.z << std::endl;
  progress() << (std::size_t{grid.x} << 13) << std::endl;
  timed(HERE, launches);
  stageCheck("RectangularPiston_func_device", HERE);
}

cudaError_t waitForPiece() {
  const cudaError_t error = pistonfield::cudaThreadSynchronize();
  callCheck(error, "cudaThreadSynchronize()", HERE);
  return error;
}

}  // namespace

void RectangularPiston_func_unstructured(Complex* data, int nbPositions, float* pos, float a,
                                         float b, float k) {
  stageCheck("pre do_calculate_grid", HERE);
  const auto points = static_cast<std::size_t>(nbPositions);
  const std::size_t datasize = points * sizeof(float);
  printAllocation(datasize);

  DeviceBuffer<Complex> d_arrayr;
  callCheck(d_arrayr.allocate(datasize * 2), "cudaMalloc((void**)&d_arrayr, datasize*2)", HERE);
  DeviceBuffer<float> d_pos;
  callCheck(d_pos.allocate(points * 3 * sizeof(float)),
            "cudaMalloc((void**)&d_pos, nbPositions*3*sizeof(float))", HERE);
  callCheck(cudaMemcpy(d_pos.get(), pos, points * 3 * sizeof(float), cudaMemcpyHostToDevice),
            "cudaMemcpy(&d_pos[0], &pos[0], nbPositions*3*sizeof(float), cudaMemcpyHostToDevice)",
            HERE);

  const auto launchPiece = [&](int first, int count) {
    return launchPointList(d_arrayr.get() + first, count, d_pos.get() + std::ptrdiff_t{3} * first,
                           a, b, k);
  };
  evaluatePointList(nbPositions,
                    [&] { launchInPieces(nbPositions, loadedOrder, launchPiece, waitForPiece); });

  callCheck(cudaMemcpy(data, d_arrayr.get(), datasize * 2, cudaMemcpyDeviceToHost),
            "cudaMemcpy( &data[0], d_arrayr, datasize*2, cudaMemcpyDeviceToHost )", HERE);
  callCheck(d_pos.free(), "cudaFree(d_pos)", HERE);
  callCheck(d_arrayr.free(), "cudaFree(d_arrayr)", HERE);
}

void RectangularPiston_func_unstructured_device(Complex* d_array, int nbPos, float* d_pos, float a,
                                                float b, float k) {
  evaluatePointList(nbPos, [&] { launchPointList(d_array, nbPos, d_pos, a, b, k); });
}

void RectangularPiston_func(Complex* data, int sx, int sy, int sz, float* transform, float a,
                            float b, float k) {
  stageCheck("pre RectangularPiston_func", HERE);
  const std::size_t datasize = gridBytes(sx, sy, sz, sizeof(Complex));
  DeviceBuffer<Complex> d_array;
  callCheck(d_array.allocate(datasize), "cudaMalloc((void**)&d_array, datasize)", HERE);
  printTransform(" transform: ", transform);
  RectangularPiston_func_device(d_array.get(), sx, sy, sz, transform, a, b, k);
  callCheck(cudaMemcpy(data, d_array.get(), datasize, cudaMemcpyDeviceToHost),
            "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )", HERE);
  callCheck(d_array.free(), "cudaFree(d_array)", HERE);
}

void RectangularPiston_func_device(Complex* d_array, int sx, int sy, int sz, float* transform,
                                   float a, float b, float k) {
  stageCheck("pre RectangularPison_func_device", HERE);
  printTransform(" _device transform: ", transform);
  DeviceBuffer<float> d_transform;
  uploadTransform(d_transform, transform);
  launchTimed(HERE, calculate_grid, regularGridShape(sx, sy, sz), blockShape, d_array, sx, sy, sz,
              d_transform.get(), half(b), half(a), k);
  stageCheck("RectangularPiston_func_device", HERE);
  callCheck(d_transform.free(), "cudaFree(d_transform)", HERE);
}

void RectangularPiston_func2(float* datar, float* datai, int sx, int sy, int sz, float* transform,
                             float a, float b, float k) {
  stageCheck("pre do_calculate_grid", HERE);
  const std::size_t datasize = gridBytes(sx, sy, sz, sizeof(float));
  printAllocation(datasize);
  DeviceBuffer<float> d_arrayr;
  callCheck(d_arrayr.allocate(datasize), "cudaMalloc((void**)&d_arrayr, datasize)", HERE);
  DeviceBuffer<float> d_arrayi;
  callCheck(d_arrayi.allocate(datasize), "cudaMalloc((void**)&d_arrayi, datasize)", HERE);
  RectangularPiston_func2_device(d_arrayr.get(), d_arrayi.get(), sx, sy, sz, transform, a, b, k);
  callCheck(cudaMemcpy(datar, d_arrayr.get(), datasize, cudaMemcpyDeviceToHost),
            "cudaMemcpy( &datar[0], d_arrayr, datasize, cudaMemcpyDeviceToHost )", HERE);
  callCheck(cudaMemcpy(datai, d_arrayi.get(), datasize, cudaMemcpyDeviceToHost),
            "cudaMemcpy( &datai[0], d_arrayi, datasize, cudaMemcpyDeviceToHost )", HERE);
  callCheck(d_arrayr.free(), "cudaFree(d_arrayr)", HERE);
  callCheck(d_arrayi.free(), "cudaFree(d_arrayi)", HERE);
}

void RectangularPiston_func2_device(float* d_arrayr, float* d_arrayi, int sx, int sy, int sz,
                                    float* transform, float a, float b, float k) {
  stageCheck("pre RectangularPiston_func2_device", HERE);
  DeviceBuffer<float> d_transform;
  uploadTransform(d_transform, transform);
  launchTimed(HERE, calculate_grid, regularGridShape(sx, sy, sz), blockShape, d_arrayr, d_arrayi,
              sx, sy, sz, d_transform.get(), half(b), half(a), k);
  stageCheck("RectangularPiston_func2_device", HERE);
  callCheck(d_transform.free(), "cudaFree(d_transform)", HERE);
}

void RectangularPiston_func_structured(Complex* data, int sx, int sy, int sz, float* posx,
                                       float* posy, float* posz, float a, float b, float k) {
  stageCheck("pre do_calculate_grid", HERE);
  const std::size_t datasize = gridBytes(sx, sy, sz, sizeof(float));
  const auto bytesOf = [](int size) { return static_cast<std::size_t>(size) * sizeof(float); };
  printAllocation(datasize);

  DeviceBuffer<Complex> d_arrayr;
  callCheck(d_arrayr.allocate(datasize * 2), "cudaMalloc((void**)&d_arrayr, datasize*2)", HERE);
  DeviceBuffer<float> d_posx;
  callCheck(d_posx.allocate(bytesOf(sx)), "cudaMalloc((void**)&d_posx, sx * sizeof(float))", HERE);
  DeviceBuffer<float> d_posy;
  callCheck(d_posy.allocate(bytesOf(sy)), "cudaMalloc((void**)&d_posy, sy * sizeof(float))", HERE);
  DeviceBuffer<float> d_posz;
  callCheck(d_posz.allocate(bytesOf(sz)), "cudaMalloc((void**)&d_posz, sz * sizeof(float))", HERE);

  callCheck(cudaMemcpy(d_posx.get(), posx, bytesOf(sx), cudaMemcpyHostToDevice),
            "cudaMemcpy(&d_posx[0], &posx[0], sx*sizeof(float), cudaMemcpyHostToDevice)", HERE);
  callCheck(cudaMemcpy(d_posy.get(), posy, bytesOf(sy), cudaMemcpyHostToDevice),
            "cudaMemcpy(&d_posy[0], &posy[0], sy*sizeof(float), cudaMemcpyHostToDevice)", HERE);
  callCheck(cudaMemcpy(d_posz.get(), posz, bytesOf(sz), cudaMemcpyHostToDevice),
            "cudaMemcpy(&d_posz[0], &posz[0], sz*sizeof(float), cudaMemcpyHostToDevice)", HERE);

  RectangularPiston_func_structured_device(d_arrayr.get(), sx, sy, sz, d_posx.get(), d_posy.get(),
                                           d_posz.get(), a, b, k);

  callCheck(cudaMemcpy(data, d_arrayr.get(), datasize * 2, cudaMemcpyDeviceToHost),
            "cudaMemcpy( &data[0], d_arrayr, datasize*2, cudaMemcpyDeviceToHost )", HERE);
  callCheck(d_posz.free(), "cudaFree(d_posz)", HERE);
  callCheck(d_posy.free(), "cudaFree(d_posy)", HERE);
  callCheck(d_posx.free(), "cudaFree(d_posx)", HERE);
  callCheck(d_arrayr.free(), "cudaFree(d_arrayr)", HERE);
}

void RectangularPiston_func_structured_device(Complex* d_array, int sx, int sy, int sz,
                                              float* d_posx, float* d_posy, float* d_posz, float a,
                                              float b, float k) {
  stageCheck("pre RectangularPison_func_device", HERE);
  launchTimed(HERE, calculate_grid_structured, regularGridShape(sx, sy, sz), blockShape, d_array,
              sx, sy, sz, d_posx, d_posy, d_posz, half(b), half(a), k);
  stageCheck("RectangularPiston_func_device", HERE);
}

void do_calculate_grid(Complex* data, int sx, int sy, int sz, float transform00, float transform01,
                       float transform02, float transform03, float transform10, float transform11,
                       float transform12, float transform13, float transform20, float transform21,
                       float transform22, float transform23, float a, float b, float k) {
  stageCheck("pre do_calculate_grid", HERE);
  const std::size_t datasize = gridBytes(sx, sy, sz, sizeof(Complex));
  DeviceBuffer<Complex> d_array;
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

void do_calculate(Complex* data, int sx, int sy, int sz, float dx, float dy, float dz, float a,
                  float b, float k) {
  stageCheck("pre do_calculate", HERE);
  const std::size_t datasize = gridBytes(sx, sy, sz, sizeof(Complex));
  DeviceBuffer<Complex> d_array;
  callCheck(d_array.allocate(datasize), "cudaMalloc((void**)&d_array, datasize)", HERE);
  launch(calculate, regularGridShape(sx, sy, sz), blockShape, d_array.get(), sx, sy, sz, dx, dy, dz,
         half(b), half(a), k);
  stageCheck("calculate", HERE);
  callCheck(cudaMemcpy(data, d_array.get(), datasize, cudaMemcpyDeviceToHost),
            "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )", HERE);
  callCheck(d_array.free(), "cudaFree(d_array)", HERE);
}

void resort(float* data, int n) {
  const std::vector<float> split(data, data + std::ptrdiff_t{2} * n);
  const auto points = static_cast<std::size_t>(n);
  for (std::size_t i = 0; i < points; ++i) {
    data[2 * i] = split[i];
    data[2 * i + 1] = split[points + i];
  }
}
