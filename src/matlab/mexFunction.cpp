#include <mex.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPiston2.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "core/Grid.h"
#include "core/Interruption.h"
#include "core/Progress.h"
#include "core/cudahelper.h"
#include "matlab/Arguments.h"
#include "matlab/MatlabErrorHandler.h"
#include "matlab/hosts/Interruption.h"
#include "parallel/Spread.h"
#include "version.h"

// p = pistonfield(points, ignored, l, s, k, mode, nabscissas)
//
// The order of checks, printing and work is what users see, and is kept. Errors of the host unwind
// through here as exceptions of the host's own, so nothing here catches what it does not know.

namespace pistonfield {
namespace {

constexpr const char* model = "RectangularPiston";

// The module that other functions call differs from the one that users call in this alone.
#ifdef PISTONFIELD_QUIET
constexpr bool tellsProgress = false;
#else
constexpr bool tellsProgress = true;
#endif

void printInfo() {
  mexPrintf("Compiled on %s\n", PISTONFIELD_COMPILED_ON);
  mexPrintf("mercurial id:       %s\n", PISTONFIELD_ID);
  mexPrintf("mercurial datae:    %s\n", PISTONFIELD_DATE);
  mexPrintf("mercurial revision: %s\n", PISTONFIELD_REVISION);
}

void echoFirstPoint(const double* points) {
  progress() << points[0] << " " << points[1] << " " << points[2] << std::endl;
}

mxArray* createResult(unsigned count) {
  const mwSize dims[] = {static_cast<mwSize>(count), 1};  // the second for hosts that want two
  return mxCreateNumericArray(1, dims, mxDOUBLE_CLASS, mxCOMPLEX);
}

/// The table's column-major data, read as pairs: entry i is (data[2i], data[2i + 1]). Of a table
/// longer than the device's, which the last step refuses, only as many are read as that would hold.
void loadTable(const Quadrature& quadrature) {
  progress() << "3" << std::endl;
  constexpr std::size_t mostHeld = 256;
  const auto half = std::min((static_cast<std::size_t>(quadrature.nabs) + 1) / 2, mostHeld);
  const std::unique_ptr<float[]> abscissas(new float[half]);
  const std::unique_ptr<float[]> weights(new float[half]);
  for (std::size_t i = 0; i < half; ++i) {
    abscissas[i] = static_cast<float>(quadrature.table[2 * i]);
    weights[i] = static_cast<float>(quadrature.table[2 * i + 1]);
  }
  setIntegratorWeightsSym(model, abscissas.get(), weights.get(), quadrature.nabs);
}

void loadOrder(int order) {
  progress() << "4" << std::endl;
  setCudaIntegratorParameters(model, order);
}

// Numbers are copied and converted by all cores, each at least so many points at once.
constexpr std::uint64_t pointsAtOnce = 1 << 14;

/// The points x, y, z that stand one after the other.
GridUnstructured<double> gridOf(const double* points, unsigned count) {
  GridUnstructured<double> grid(count);
  parallel::spread(count, pointsAtOnce, [&](std::size_t first, std::size_t last) {
    for (std::size_t i = first; i < last; ++i)
      grid.positions[i] = MVector<double, 3>(points + 3 * i);
  });
  return grid;
}

/// x, y, z of every point of the grid.
std::unique_ptr<float[]> narrowed(const GridUnstructured<double>& grid) {
  std::unique_ptr<float[]> positions(new float[3 * grid.positions.size()]);
  parallel::spread(grid.positions.size(), pointsAtOnce, [&](std::size_t first, std::size_t last) {
    float* component = &positions[3 * first];
    for (std::size_t i = first; i < last; ++i)
      for (int axis = 0; axis < 3; ++axis)
        *component++ = static_cast<float>(grid.positions[i][axis]);
  });
  return positions;
}

/// The pressure at every point of the grid.
std::unique_ptr<Complex[]> evaluate(const RectangularPistonCuda2& piston,
                                    const GridUnstructured<double>& grid) {
  const std::size_t count = grid.nbPositions();
  const std::unique_ptr<float[]> positions = narrowed(grid);
  std::unique_ptr<Complex[]> result(new Complex[count]);
  RectangularPiston_func_unstructured(result.get(), static_cast<int>(count), positions.get(),
                                      static_cast<float>(piston.l), static_cast<float>(piston.s),
                                      static_cast<float>(piston.k));
  return result;
}

void widen(const Complex* pressures, std::size_t count, double* re, double* im) {
  parallel::spread(count, pointsAtOnce, [&](std::size_t first, std::size_t last) {
    for (std::size_t i = first; i < last; ++i) {
      re[i] = pressures[i].re;
      im[i] = pressures[i].im;
    }
  });
}

void call(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
  ErrorHandler::setErrorHandler(new MatlabErrorHandler);
  setInterruptionCheck(endInterruptedCall);
  tellProgress(tellsProgress);
  const CudaDeviceThread device;

  if (nlhs == 0 && nrhs == 1 && isText(prhs[POINTS], "info")) {
    printInfo();
    return;
  }

  checkCounts(nlhs, nrhs);
  checkPointsType(prhs[POINTS]);
  const Quadrature quadrature = readQuadrature(nrhs, prhs);

  const double l = readScalar(prhs, L);
  const double s = readScalar(prhs, S);
  const double k = readScalar(prhs, K);
  if (progressIsTold()) mexPrintf("l=%f, s=%f, k=%f\n", l, s, k);

  const unsigned count = countPoints(prhs[POINTS]);
  const double* const points = mxGetPr(prhs[POINTS]);
  if (count > 0) echoFirstPoint(points);
  plhs[0] = createResult(count);
  if (count == 0) mexErrMsgTxt("The given grid must have at least one data point");

  const bool useGPU = readUseGPU(nrhs, prhs);
  plhs[0] = createResult(count);
  auto* const re = static_cast<double*>(mxGetData(plhs[0]));
  auto* const im = static_cast<double*>(mxGetImagData(plhs[0]));

  const RectangularPistonCuda2 piston(l, s, k);
  const GridUnstructured<double> grid = gridOf(points, count);
  if (!useGPU) mexErrMsgTxt("CPU version not implemented, yet.");

  if (quadrature.isTable)
    loadTable(quadrature);
  else
    loadOrder(quadrature.nabs);

  const std::unique_ptr<Complex[]> result = evaluate(piston, grid);
  widen(result.get(), count, re, im);
}

}  // namespace
}  // namespace pistonfield

void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
  bool outOfMemory = false;
  try {
    pistonfield::call(nlhs, plhs, nrhs, prhs);
  } catch (const std::bad_alloc&) {
    outOfMemory = true;
  } catch (const std::length_error&) {
    outOfMemory = true;
  }
  if (outOfMemory) mexErrMsgTxt("There is not enough memory for this many points.");
}
