#include <mex.h>

#include <cstring>
#include <iostream>
#include <memory>
#include <new>
#include <stdexcept>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPiston2.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "core/Grid.h"
#include "core/cudahelper.h"
#include "matlab/Arguments.h"
#include "matlab/MatlabErrorHandler.h"
#include "version.h"

// p = pistonfield(points, ignored, l, s, k, mode, nabscissas)
//
// The order of checks, printing and work is what users see, and is kept. Errors of the host unwind
// through here as exceptions of the host's own, so nothing here catches what it does not know.

namespace pistonfield {
namespace {

constexpr const char* model = "RectangularPiston";

void printInfo() {
  mexPrintf("Compiled on %s\n", PISTONFIELD_COMPILED_ON);
  mexPrintf("mercurial id:       %s\n", PISTONFIELD_ID);
  mexPrintf("mercurial datae:    %s\n", PISTONFIELD_DATE);
  mexPrintf("mercurial revision: %s\n", PISTONFIELD_REVISION);
}

void echoFirstPoint(const double* points) {
  std::cout << points[0] << " " << points[1] << " " << points[2] << std::endl;
}

mxArray* createResult(unsigned count) {
  const mwSize dims[] = {static_cast<mwSize>(count), 1};  // the second for hosts that want two
  return mxCreateNumericArray(1, dims, mxDOUBLE_CLASS, mxCOMPLEX);
}

void fill(GridUnstructured<double>& grid, const double* points) {
  for (MVector<double, 3>& position : grid.positions)
    for (int axis = 0; axis < 3; ++axis) position[axis] = *points++;
}

/// The table's column-major data, read as pairs: entry i is (data[2i], data[2i + 1]).
void loadTable(const Quadrature& quadrature) {
  std::cout << "3" << std::endl;
  const auto half = (static_cast<std::size_t>(quadrature.nabs) + 1) / 2;
  const std::unique_ptr<float[]> abscissas(new float[half]);
  const std::unique_ptr<float[]> weights(new float[half]);
  for (std::size_t i = 0; i < half; ++i) {
    abscissas[i] = static_cast<float>(quadrature.table[2 * i]);
    weights[i] = static_cast<float>(quadrature.table[2 * i + 1]);
  }
  setIntegratorWeightsSym(model, abscissas.get(), weights.get(), quadrature.nabs);
}

void loadOrder(int order) {
  std::cout << "4" << std::endl;
  setCudaIntegratorParameters(model, order);
}

/// The pressure at every point of the grid: `count` pairs of floats.
std::unique_ptr<float[]> evaluate(const RectangularPistonCuda2& piston, const Grid<double>& grid) {
  const std::size_t count = grid.nbPositions();
  std::unique_ptr<float[]> result(new float[2 * count]);
  std::unique_ptr<float[]> positions(new float[3 * count]);
  for (std::size_t i = 0; i < count; ++i) {
    MVector<double, 3> position = grid.getPosition(static_cast<int>(i));
    for (int axis = 0; axis < 3; ++axis)
      positions[3 * i + static_cast<std::size_t>(axis)] = static_cast<float>(position[axis]);
  }
  std::unique_ptr<Complex[]> launchOut(new Complex[count]);
  RectangularPiston_func_unstructured(launchOut.get(), static_cast<int>(count), positions.get(),
                                      static_cast<float>(piston.l), static_cast<float>(piston.s),
                                      static_cast<float>(piston.k));
  std::memcpy(result.get(), launchOut.get(), 2 * count * sizeof(float));
  return result;
}

void widen(const float* pairs, std::size_t count, double* re, double* im) {
  for (std::size_t i = 0; i < count; ++i) {
    re[i] = pairs[2 * i];
    im[i] = pairs[2 * i + 1];
  }
}

void call(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
  ErrorHandler::setErrorHandler(new MatlabErrorHandler);
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
  mexPrintf("l=%f, s=%f, k=%f\n", l, s, k);

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
  GridUnstructured<double> grid(count);
  fill(grid, points);
  if (!useGPU) mexErrMsgTxt("CPU version not implemented, yet.");

  if (quadrature.isTable)
    loadTable(quadrature);
  else
    loadOrder(quadrature.nabs);

  const std::unique_ptr<float[]> result = evaluate(piston, grid);
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
