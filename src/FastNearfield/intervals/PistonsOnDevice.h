#pragma once

#include "FastNearfield/intervals/PistonOnPoints.h"
#include "core/CudaCompatibility.h"

namespace pistonfield {

/// What the evaluation of one point used: the numbers of `Used`, in a form without padding, which
/// is copied between host and device.
struct UsedAtPoint {
  double excess, positionError;
  long long nodes;
  int leastOrder, mostOrder;
  int single, precise;
};

/// Points, the sums of pressures at them, and what these used. All pointers are the device's.
struct PointsOnDevice {
  const double *x, *y, *z;  ///< finite
  int count;
  double *re, *im;
  UsedAtPoint* used;
};

/// Starts a kernel of which each thread adds the pressures of the pistons first ... last − 1 at one
/// point; for first = 0, instead of adding, it sets the sums. `pistons`, and the rules that they
/// point to, are in device memory. Returns the status of the launch.
cudaError_t launchPistons(const PointsOnDevice& points, const WeightedPiston* pistons, int first,
                          int last);

/// Whether the current device is a GPU that has the kernel. If so, it is started, and stays so
/// (core/DeviceUse.h).
bool isGpuForPistons();

}  // namespace pistonfield
