#include "FastNearfield/RectangularPiston2.h"

#include <algorithm>
#include <array>

#include "FastNearfield/RectangularPistonCuda.dp.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "core/CudaCheck.h"
#include "core/DeviceLock.h"
#include "core/ErrorHandler.h"
#include "core/PlainAssertion.h"
#include "core/Progress.h"
#include "core/RuleOwner.h"

namespace pistonfield {
namespace {

constexpr int cpuOrder = 100;

// Fixed line numbers: they are part of messages that users know.
constexpr SourceLocation sizeCheck{"src/FastNearfield/RectangularPiston2", 56};
constexpr SourceLocation noDoubleStorageOnGPU{"src/FastNearfield/RectangularPiston2", 64};

std::array<float, 16> asFloats(const Grid3DR<double>::Transform& transform) {
  std::array<float, 16> floats{};
  std::transform(transform.begin(), transform.end(), floats.begin(),
                 [](double value) { return static_cast<float>(value); });
  return floats;
}

/// Whether the calling thread has loaded a rule. Calls the error handler if it has not.
bool isReady(Precision precision) {
  if (hasOwnRule(precision)) return true;
  constexpr SourceLocation location{"src/FastNearfield/RectangularPiston2", __LINE__};
  if (precision == Precision::SINGLE)
    fail(
        "No quadrature rule is loaded: call setCudaIntegratorParameters(\"RectangularPiston\", "
        "order) on this thread, inside its CudaDeviceThread",
        location);
  else
    fail(
        "No quadrature rule is loaded in double precision: call "
        "setCudaIntegratorParameters(\"RectangularPiston\", order) on this thread, inside its "
        "CudaDeviceThread. Builds with PISTONFIELD_DOUBLE=OFF have single precision only",
        location);
  return false;
}

/// Converts a grid size to the launchers' type.
int launched(unsigned size) { return static_cast<int>(size); }

/// Prints the first two results.
void echo(const float* out, unsigned points) {
  progress() << " CUDADATA: ";
  for (unsigned n = 0; n < 2 * std::min(points, 2U); ++n)
    progress() << (n > 0 ? " " : "") << out[n];
  progress() << std::endl;
}

}  // namespace

RectangularPistonCuda2::RectangularPistonCuda2(double l_, double s_, double k_)
    : l(l_),
      s(s_),
      k(k_),
      doubleTable_(cpuOrder),
      floatTable_(cpuOrder),
      floatRule(&floatTable_),
      doubleRule(&doubleTable_) {}

void RectangularPistonCuda2::compute(float* out, const Grid3DR<double>& grid) const {
  if (!useGPU) {
    computeCPU<float, double>(out, grid);
    const std::lock_guard line(progressMutex());
    progress() << "cpu" << std::endl;
    return;
  }
  const DeviceLock lock;
  const ReportedErrorIsCleared guard;
  if (!isReady(Precision::SINGLE)) return;
  if (grid.nbPositions() > 0) {  // an empty launch is an error
    std::array<float, 16> transform = asFloats(grid.transform());
    RectangularPiston_func(reinterpret_cast<Complex*>(out), launched(grid.sx()),
                           launched(grid.sy()), launched(grid.sz()), transform.data(),
                           static_cast<float>(l), static_cast<float>(s), static_cast<float>(k));
  }
  progress() << "cuda" << std::endl;
  echo(out, grid.nbPositions());
}

void RectangularPistonCuda2::compute(double* out, const Grid3DR<double>& grid) const {
  if (!useGPU) {
    computeCPU<double, double>(out, grid);
    return;
  }
  const DeviceLock lock;
  const ReportedErrorIsCleared guard;
  if (!isReady(Precision::DOUBLE)) return;
  progress() << "computeCudaDouble 1" << std::endl;
  if (grid.nbPositions() == 0) return;
  Grid3DR<double>::Transform transform = grid.transform();
  RectangularPiston_func_d(reinterpret_cast<Complexd*>(out), launched(grid.sx()),
                           launched(grid.sy()), launched(grid.sz()), transform.data(), l, s, k);
}

void RectangularPistonCuda2::compute(CudaStorage* data, const Grid3DR<double>& grid) const {
  if (data->getSize() != std::size_t{grid.nbPositions()} * 2) {
    fail("data->getSize() == grid.nbPositions()*2", sizeCheck);
    return;  // the storage does not match the grid
  }
  if (data->getType() == CudaStorage::DT_DOUBLE) {
    if (useGPU) failPlainAssertion("false", "compute", noDoubleStorageOnGPU);
    computeCPU<double, double>(data->getDoubleData(), grid);
  } else if (!useGPU) {
    computeCPU<float, double>(data->getFloatData(), grid);
  } else {
    const DeviceLock lock;
    const ReportedErrorIsCleared guard;
    if (!isReady(Precision::SINGLE)) return;
    progress() << "CudaStorage function in RectangularPistonCuda2" << std::endl;
    if (grid.nbPositions() == 0) return;
    std::array<float, 16> transform = asFloats(grid.transform());
    RectangularPiston_func_device(static_cast<Complex*>(data->getDeviceData()), launched(grid.sx()),
                                  launched(grid.sy()), launched(grid.sz()), transform.data(),
                                  static_cast<float>(l), static_cast<float>(s),
                                  static_cast<float>(k));
  }
}

}  // namespace pistonfield
