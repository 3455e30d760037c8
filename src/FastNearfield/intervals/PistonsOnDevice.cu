#include "FastNearfield/intervals/PistonsOnDevice.h"

#include <climits>
#include <cstdint>

#include "FastNearfield/intervals/PistonInPacks.h"
#include "core/CudaCompatibility.h"
#include "core/DeviceUse.h"
#include "lanes/OneLane.h"

// The kernel for sums of pistons. It runs the CPU's own code, with packs of one point: bounds,
// orders and precisions are those of each point alone.

namespace pistonfield {
namespace {

constexpr int threadsPerBlock = 128;

__device__ inline void addAtPoint(const PointsOnDevice& points, const WeightedPiston* pistons,
                                  int first, int last, int n) {
  Used used{INT_MAX, 0, 0, false, false, 0, 0};
  double re = 0, im = 0;
  if (first > 0) {
    const UsedAtPoint& before = points.used[n];
    used = {before.leastOrder,   before.mostOrder, before.nodes,        before.single != 0,
            before.precise != 0, before.excess,    before.positionError};
    re = points.re[n];
    im = points.im[n];
  }
  const double x = points.x[n], y = points.y[n], z = points.z[n];
  for (int piston = first; piston < last; ++piston)
    PistonInPacks<OneLane>(pistons[piston], used).add(&x, &y, &z, 1, &re, &im);
  points.re[n] = re;
  points.im[n] = im;
  points.used[n] = {used.excess,    used.positionError,  used.nodes,          used.leastOrder,
                    used.mostOrder, used.single ? 1 : 0, used.precise ? 1 : 0};
}

}  // namespace

__global__ void add_pistons(const double* x, const double* y, const double* z, int count,
                            const WeightedPiston* pistons, int first, int last, double* re,
                            double* im, UsedAtPoint* used) {
  const PointsOnDevice points{x, y, z, count, re, im, used};
#if defined(__CUDACC__)
  const unsigned n = threadIdx.x + blockDim.x * blockIdx.x;
  if (n < static_cast<unsigned>(count))
    addAtPoint(points, pistons, first, last, static_cast<int>(n));
#else
  emulation::forRangesOfThreads([&](std::uint64_t begin, std::uint64_t end) {
    for (std::uint64_t n = begin; n < end && n < static_cast<std::uint64_t>(count); ++n)
      addAtPoint(points, pistons, first, last, static_cast<int>(n));
  });
#endif
}

cudaError_t launchPistons(const PointsOnDevice& points, const WeightedPiston* pistons, int first,
                          int last) {
  const auto blocks = static_cast<unsigned>((points.count + threadsPerBlock - 1) / threadsPerBlock);
  return launch(add_pistons, dim3(blocks), dim3(threadsPerBlock), points.x, points.y, points.z,
                points.count, pistons, first, last, points.re, points.im, points.used);
}

#if defined(CUDART_VERSION)
bool isGpuForPistons() {
  keepCurrentDevice();
  cudaFuncAttributes attributes{};
  const bool is =
      cudaFuncGetAttributes(&attributes, reinterpret_cast<const void*>(add_pistons)) == cudaSuccess;
  if (!is) cudaGetLastError();  // clears the error
  return is;
}
#else
bool isGpuForPistons() { return false; }
#endif

}  // namespace pistonfield
