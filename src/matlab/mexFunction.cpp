#include <mex.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <stdexcept>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/PressuresAt.h"
#include "core/DeviceUse.h"
#include "core/Interruption.h"
#include "core/Progress.h"
#include "core/cudahelper.h"
#include "matlab/Arguments.h"
#include "matlab/MatlabErrorHandler.h"
#include "matlab/hosts/Interruption.h"
#include "version.h"

// p = pistonfield(points, ignored, l, s, k, mode, nabscissas)
//
// CONTRIBUTING.md follows a call from here down; without a GPU the device is emulated
// (src/emulation).
//
// Users see the order of checks, printed lines and work, so it must not change. Host errors unwind
// through this file as exceptions of the host, so it catches only exceptions of its own.

namespace pistonfield {
namespace {

constexpr const char* model = "RectangularPiston";

// The only differences between pistonfield and pistonfield_quiet, which the other functions call,
// some of them many times: pistonfield_quiet shows no progress, and the device stays started until
// the host unloads the module.
#ifdef PISTONFIELD_QUIET
constexpr bool showsProgress = false;
void keepDevicesUntilUnloaded() {
  keepDevices();
  mexAtExit(releaseKeptDevices);
}
#else
constexpr bool showsProgress = true;
void keepDevicesUntilUnloaded() {}
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
  // One dimension becomes a column; the second is for hosts that read two all the same.
  const mwSize dims[] = {static_cast<mwSize>(count), 1};
  return mxCreateNumericArray(1, dims, mxDOUBLE_CLASS, mxCOMPLEX);
}

/// Reads the table's column-major data as pairs: entry i is (data[2i], data[2i + 1]). Users pass
/// this packing, not [x, w]: pistonrule.m writes it. setIntegratorWeightsSym rejects more than 512
/// rows; until then at most 256 pairs are read.
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

/// Computes the rule and loads it into the device's constant memory, where pistonOf() finds it
/// (RectangularPistonCuda.cu and .dp.cu).
void loadOrder(int order) {
  progress() << "4" << std::endl;
  setCudaIntegratorParameters(model, order);
}

void call(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
  ErrorHandler::setErrorHandler(new MatlabErrorHandler);  // which ErrorHandler owns
  setInterruptionCheck(endInterruptedCall);
  showProgress(showsProgress);
  keepDevicesUntilUnloaded();
  const CudaDeviceThread device;  // holds the device until the call ends

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
  if (progressIsShown()) mexPrintf("l=%f, s=%f, k=%f\n", l, s, k);

  const unsigned count = countPoints(prhs[POINTS]);
  const double* const points = mxGetPr(prhs[POINTS]);
  if (count > 0) echoFirstPoint(points);
  plhs[0] = createResult(count);
  if (count == 0) mexErrMsgTxt("The given grid must have at least one data point");

  if (!selectsDevice(nrhs, prhs)) mexErrMsgTxt("CPU version not implemented, yet.");

  if (quadrature.isTable)
    loadTable(quadrature);
  else
    loadOrder(quadrature.nabs);

  pressuresAt(points, static_cast<int>(count), static_cast<float>(l), static_cast<float>(s),
              static_cast<float>(k), static_cast<double*>(mxGetData(plhs[0])),
              static_cast<double*>(mxGetImagData(plhs[0])));
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
