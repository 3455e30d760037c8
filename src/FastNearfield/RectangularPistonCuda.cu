#include "FastNearfield/RectangularPistonCuda.h"

#include <cstddef>
#include <string>
#include <vector>

#include "FastNearfield/EvaluatePoints.h"
#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/LaunchPieces.h"
#include "FastNearfield/LauncherSteps.h"
#include "FastNearfield/PressuresAt.h"
#include "core/DeviceLock.h"
#include "core/Progress.h"

// The texts of checks and of printed lines are fixed, misspellings included: users see them. So are
// the names of the tables in constant memory.

using namespace pistonfield;  // NOLINT(google-build-using-namespace): for the plain names below

namespace {
constexpr const char* sourceFile = "src/FastNearfield/RectangularPistonCuda";
}

// The rule, in constant memory. setIntegratorWeightsSym writes it; pistonOf() hands it to the
// kernels.

__constant__ float global_RectangularPiston_float_x[mostNodes / 2];
__constant__ float global_RectangularPiston_float_w[mostNodes / 2];
__constant__ int global_RectangularPiston_float_N;

namespace {

/// The order of the rule, for the length of the first piece.
int loadedOrder = 0;

cudaError_t writeSymbol(const std::string& symbol, const void* data, std::size_t size) {
  return writeToSymbol(
      {{"global_RectangularPiston_float_x", copyTo<global_RectangularPiston_float_x>},
       {"global_RectangularPiston_float_w", copyTo<global_RectangularPiston_float_w>},
       {"global_RectangularPiston_float_N", copyTo<global_RectangularPiston_float_N>}},
      symbol.c_str(), data, size);
}

}  // namespace

void setIntegratorWeightsSym(const char* name, const float* x, const float* w, int N) {
  const DeviceLock lock;
  progress() << "set weights float" << std::endl;
  stageCheck("start setIntegratorWeightsSym", HERE);
  if (N >= 1) progress() << x[0] << std::endl;
  if (N < 1 || N > mostNodes) {
    fail("N <= 512 && N>0", HERE);
    return;  // there is no such table to read or to write
  }
  const std::string prefix = std::string("global_") + name + "_float_";
  progress() << "symbol: \"" << prefix + "x"
             << "\"" << std::endl;
  loadedOrder = N;
  loadRule(HERE, writeSymbol, prefix, x, w, N);
}

// The kernels. evaluatePoints() is defined in EvaluatePointsOnGpu.h for nvcc, and in
// EvaluatePointsInPacks.h for a C++ compiler.

namespace {

/// The piston with the loaded rule.
__device__ KernelPiston<float> pistonOf(float halfWidth, float halfHeight, float k) {
  return {halfWidth,
          halfHeight,
          k,
          {global_RectangularPiston_float_x, global_RectangularPiston_float_w,
           global_RectangularPiston_float_N}};
}

}  // namespace

__global__ void calculate(Complex* d_array, int sx, int sy, int sz, float dx, float dy, float dz,
                          float halfWidth, float halfHeight, float k) {
  evaluatePoints(pistonOf(halfWidth, halfHeight, k), SteppedGrid<float>(sx, sy, sz, {dx, dy, dz}),
                 Pairs<float>{d_array});
}

__global__ void calculate_grid(Complex* d_array, int sx, int sy, int sz, float transform00,
                               float transform01, float transform02, float transform03,
                               float transform10, float transform11, float transform12,
                               float transform13, float transform20, float transform21,
                               float transform22, float transform23, float halfWidth,
                               float halfHeight, float k) {
  const AffineMap<float> map{{transform00, transform01, transform02, transform03, transform10,
                              transform11, transform12, transform13, transform20, transform21,
                              transform22, transform23}};
  evaluatePoints(pistonOf(halfWidth, halfHeight, k), MappedGrid<float>(sx, sy, sz, map),
                 Pairs<float>{d_array});
}

__global__ void calculate_grid(float* d_arrayr, float* d_arrayi, int sx, int sy, int sz,
                               float transform00, float transform01, float transform02,
                               float transform03, float transform10, float transform11,
                               float transform12, float transform13, float transform20,
                               float transform21, float transform22, float transform23,
                               float halfWidth, float halfHeight, float k) {
  const AffineMap<float> map{{transform00, transform01, transform02, transform03, transform10,
                              transform11, transform12, transform13, transform20, transform21,
                              transform22, transform23}};
  evaluatePoints(pistonOf(halfWidth, halfHeight, k), MappedGrid<float>(sx, sy, sz, map),
                 Parts<float>{d_arrayr, d_arrayi});
}

__global__ void calculate_grid(Complex* d_array, int sx, int sy, int sz, float* transform,
                               float halfWidth, float halfHeight, float k) {
  evaluatePoints(pistonOf(halfWidth, halfHeight, k),
                 MappedGrid<float>(sx, sy, sz, loadAffineMap(transform)), Pairs<float>{d_array});
}

__global__ void calculate_grid(float* d_arrayr, float* d_arrayi, int sx, int sy, int sz,
                               float* transform, float halfWidth, float halfHeight, float k) {
  evaluatePoints(pistonOf(halfWidth, halfHeight, k),
                 MappedGrid<float>(sx, sy, sz, loadAffineMap(transform)),
                 Parts<float>{d_arrayr, d_arrayi});
}

__global__ void calculate_grid_unstructured(Complex* d_array, int nbPos, float* pos,
                                            float halfWidth, float halfHeight, float k) {
  evaluatePoints(pistonOf(halfWidth, halfHeight, k), PointList<float>(nbPos, pos),
                 Pairs<float>{d_array});
}

namespace {

#if defined(CUDART_VERSION)
constexpr std::nullptr_t calculate_in_host_memory = nullptr;  // is never launched
#else
/// A list of points in double precision, with real and imaginary parts in separate arrays.
__global__ void calculate_in_host_memory(double* re, double* im, int nbPos, const double* pos,
                                         float halfWidth, float halfHeight, float k) {
  evaluatePoints(pistonOf(halfWidth, halfHeight, k), PointList<float, double>(nbPos, pos),
                 Parts<float, double>{re, im});
}
#endif

}  // namespace

__global__ void calculate_grid_structured(Complex* d_array, int sx, int sy, int sz, float* posx,
                                          float* posy, float* posz, float halfWidth,
                                          float halfHeight, float k) {
  evaluatePoints(pistonOf(halfWidth, halfHeight, k),
                 GridOnAxes<float>(sx, sy, sz, {posx, posy, posz}), Pairs<float>{d_array});
}

// The launchers.

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

cudaError_t launchPointList(Complex* d_array, int nbPos, float* d_pos, HalfSides<float> sides,
                            float k) {
  return launch(calculate_grid_unstructured, pointListShape(nbPos), blockShape, d_array, nbPos,
                d_pos, sides.width, sides.height, k);
}

/// The steps of every launcher of a list of points: checks, printed lines and timing around
/// launchKernels().
template <class LaunchKernels>
void pointListSteps(int nbPos, const LaunchKernels& launchKernels) {
  stageCheck("pre RectangularPison_func_device", HERE);
  const dim3 grid = pointListShape(nbPos);
  progress() << "nbPos" << nbPos << std::endl;
  progress() << "grid: " << grid.x << " " << grid.y << " " << grid.z << std::endl;
  progress() << (std::size_t{grid.x} << 13) << std::endl;
  timed(HERE, launchKernels);
  stageCheck("RectangularPiston_func_device", HERE);
}

cudaError_t waitForPiece() {
  const cudaError_t error = waitForDevice();
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
  callCheck(d_arrayr.allocate(data, datasize * 2), "cudaMalloc((void**)&d_arrayr, datasize*2)",
            HERE);
  DeviceBuffer<float> d_pos;
  callCheck(d_pos.allocate(pos, points * 3 * sizeof(float), d_arrayr),
            "cudaMalloc((void**)&d_pos, nbPositions*3*sizeof(float))", HERE);
  callCheck(d_pos.upload(),
            "cudaMemcpy(&d_pos[0], &pos[0], nbPositions*3*sizeof(float), cudaMemcpyHostToDevice)",
            HERE);

  const auto launchPiece = [&](int first, int count) {
    return launchPointList(d_arrayr.get() + first, count, d_pos.get() + std::ptrdiff_t{3} * first,
                           halfSides(a, b), k);
  };
  pointListSteps(nbPositions,
                 [&] { launchInPieces(nbPositions, loadedOrder, launchPiece, waitForPiece); });

  callCheck(d_arrayr.download(),
            "cudaMemcpy( &data[0], d_arrayr, datasize*2, cudaMemcpyDeviceToHost )", HERE);
  callCheck(d_pos.free(), "cudaFree(d_pos)", HERE);
  callCheck(d_arrayr.free(), "cudaFree(d_arrayr)", HERE);
}

void RectangularPiston_func_unstructured_device(Complex* d_array, int nbPos, float* d_pos, float a,
                                                float b, float k) {
  pointListSteps(nbPos, [&] { launchPointList(d_array, nbPos, d_pos, halfSides(a, b), k); });
}

void pistonfield::pressuresInHostMemory(const double* points, int count, float l, float s, float k,
                                        double* re, double* im) {
  stageCheck("pre do_calculate_grid", HERE);
  printAllocation(static_cast<std::size_t>(count) * sizeof(float));
  const HalfSides<float> sides = halfSides(l, s);
  const auto launchPiece = [&](int first, int size) {
    return launch(calculate_in_host_memory, pointListShape(size), blockShape, re + first,
                  im + first, size, points + std::ptrdiff_t{3} * first, sides.width, sides.height,
                  k);
  };
  pointListSteps(count, [&] { launchInPieces(count, loadedOrder, launchPiece, waitForPiece); });
}

void RectangularPiston_func(Complex* data, int sx, int sy, int sz, float* transform, float a,
                            float b, float k) {
  stageCheck("pre RectangularPiston_func", HERE);
  PairResults<float> results(data, resultBytes(sx, sy, sz, sizeof *data), HERE);
  printTransform(" transform: ", transform);
  RectangularPiston_func_device(results.onDevice(), sx, sy, sz, transform, a, b, k);
  results.fetch();
}

void RectangularPiston_func_device(Complex* d_array, int sx, int sy, int sz, float* transform,
                                   float a, float b, float k) {
  stageCheck("pre RectangularPison_func_device", HERE);
  printTransform(" _device transform: ", transform);
  const HalfSides<float> sides = halfSides(a, b);
  DeviceTransform<float> d_transform(transform, HERE);
  launchTimed(HERE, calculate_grid, regularGridShape(sx, sy, sz), blockShape, d_array, sx, sy, sz,
              d_transform.get(), sides.width, sides.height, k);
  stageCheck("RectangularPiston_func_device", HERE);
  d_transform.free();
}

void RectangularPiston_func2(float* datar, float* datai, int sx, int sy, int sz, float* transform,
                             float a, float b, float k) {
  stageCheck("pre do_calculate_grid", HERE);
  printAllocation(gridBytes(sx, sy, sz, sizeof(float)));
  SplitResults<float> results(datar, datai, resultBytes(sx, sy, sz, sizeof(float)), HERE);
  RectangularPiston_func2_device(results.realOnDevice(), results.imaginaryOnDevice(), sx, sy, sz,
                                 transform, a, b, k);
  results.fetch();
}

void RectangularPiston_func2_device(float* d_arrayr, float* d_arrayi, int sx, int sy, int sz,
                                    float* transform, float a, float b, float k) {
  stageCheck("pre RectangularPiston_func2_device", HERE);
  const HalfSides<float> sides = halfSides(a, b);
  DeviceTransform<float> d_transform(transform, HERE);
  launchTimed(HERE, calculate_grid, regularGridShape(sx, sy, sz), blockShape, d_arrayr, d_arrayi,
              sx, sy, sz, d_transform.get(), sides.width, sides.height, k);
  stageCheck("RectangularPiston_func2_device", HERE);
  d_transform.free();
}

void RectangularPiston_func_structured(Complex* data, int sx, int sy, int sz, float* posx,
                                       float* posy, float* posz, float a, float b, float k) {
  stageCheck("pre do_calculate_grid", HERE);
  const auto bytesOf = [](int size) { return static_cast<std::size_t>(size) * sizeof(float); };
  printAllocation(gridBytes(sx, sy, sz, sizeof(float)));

  DeviceBuffer<Complex> d_arrayr;
  callCheck(d_arrayr.allocate(data, resultBytes(sx, sy, sz, sizeof *data)),
            "cudaMalloc((void**)&d_arrayr, datasize*2)", HERE);
  DeviceBuffer<float> d_posx;
  callCheck(d_posx.allocate(posx, bytesOf(sx), d_arrayr),
            "cudaMalloc((void**)&d_posx, sx * sizeof(float))", HERE);
  DeviceBuffer<float> d_posy;
  callCheck(d_posy.allocate(posy, bytesOf(sy), d_arrayr),
            "cudaMalloc((void**)&d_posy, sy * sizeof(float))", HERE);
  DeviceBuffer<float> d_posz;
  callCheck(d_posz.allocate(posz, bytesOf(sz), d_arrayr),
            "cudaMalloc((void**)&d_posz, sz * sizeof(float))", HERE);

  callCheck(d_posx.upload(),
            "cudaMemcpy(&d_posx[0], &posx[0], sx*sizeof(float), cudaMemcpyHostToDevice)", HERE);
  callCheck(d_posy.upload(),
            "cudaMemcpy(&d_posy[0], &posy[0], sy*sizeof(float), cudaMemcpyHostToDevice)", HERE);
  callCheck(d_posz.upload(),
            "cudaMemcpy(&d_posz[0], &posz[0], sz*sizeof(float), cudaMemcpyHostToDevice)", HERE);

  RectangularPiston_func_structured_device(d_arrayr.get(), sx, sy, sz, d_posx.get(), d_posy.get(),
                                           d_posz.get(), a, b, k);

  callCheck(d_arrayr.download(),
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
  const HalfSides<float> sides = halfSides(a, b);
  launchTimed(HERE, calculate_grid_structured, regularGridShape(sx, sy, sz), blockShape, d_array,
              sx, sy, sz, d_posx, d_posy, d_posz, sides.width, sides.height, k);
  stageCheck("RectangularPiston_func_device", HERE);
}

void do_calculate_grid(Complex* data, int sx, int sy, int sz, float transform00, float transform01,
                       float transform02, float transform03, float transform10, float transform11,
                       float transform12, float transform13, float transform20, float transform21,
                       float transform22, float transform23, float a, float b, float k) {
  calculateByValues<float>(
      HERE, calculate_grid, data, sx, sy, sz,
      {transform00, transform01, transform02, transform03, transform10, transform11, transform12,
       transform13, transform20, transform21, transform22, transform23},
      halfSides(a, b), k);
}

void do_calculate(Complex* data, int sx, int sy, int sz, float dx, float dy, float dz, float a,
                  float b, float k) {
  calculateFromCentre<float>(HERE, calculate, data, sx, sy, sz, dx, dy, dz, halfSides(a, b), k);
}

void resort(float* data, int n) {
  const std::vector<float> split(data, data + std::ptrdiff_t{2} * n);
  const auto points = static_cast<std::size_t>(n);
  for (std::size_t i = 0; i < points; ++i) {
    data[2 * i] = split[i];
    data[2 * i + 1] = split[points + i];
  }
}
