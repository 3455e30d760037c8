#include <mex.h>

#include <complex>
#include <cstddef>
#include <new>
#include <optional>
#include <stdexcept>
#include <vector>

#include "core/DeviceUse.h"
#include "field/field.h"
#include "matlab/ArrayCalls.h"
#include "matlab/HostArrays.h"
#include "matlab/ProgressBar.h"
#include "matlab/PulseCalls.h"
#include "matlab/hosts/Interruption.h"

// pistonfield_pressure, for the functions in functions/.
// src/matlab/functions/pistonfield_pressure.m describes its calls. Here are those for pressures,
// and the errors of all.

namespace pistonfield {
namespace {

enum Argument { WHERE, PISTONS, K, ACCURACY, BAR, COUNT };

/// For a tolerance, or from 1 on for an order.
FieldOptions optionsFor(double accuracy) {
  FieldOptions options;
  if (accuracy >= 1)
    options.order = accuracy < 513 ? static_cast<int>(accuracy) : 513;  // is refused
  else
    options.tolerance = accuracy;
  return options;
}

std::vector<double> axisOf(const mxArray* cell, std::size_t index) {
  const mxArray* const axis = mxGetCell(cell, index);
  require(axis && isReal(axis));
  return realsOf(axis);
}

/// Ends a call whose work was stopped, by the error of the progress bar if there was one.
void endStoppedCall(mxArray* failure) {
  if (failure) mexCallMATLAB(0, nullptr, 1, &failure, "rethrow");
  endInterruptedCall();
  mexErrMsgTxt("Operation terminated by user.");
}

mxArray* pressures(const Field& field, const mxArray* where, const FieldOptions& options,
                   FieldReport* report) {
  if (!mxIsCell(where))
    return arrayOf(field.at(positionsOf(where), mxGetN(where), options, report),
                   {static_cast<mwSize>(mxGetN(where)), 1});
  require(mxGetNumberOfElements(where) == 3);
  const AxesGrid grid{axisOf(where, 0), axisOf(where, 1), axisOf(where, 2)};
  return arrayOf(field.on(grid, options, report),
                 {static_cast<mwSize>(grid.x.size()), static_cast<mwSize>(grid.y.size()),
                  static_cast<mwSize>(grid.z.size())});
}

const char* precisionOf(const FieldReport& report) {
  if (report.single) return report.precise ? "both" : "single";
  return report.precise ? "double" : "none";
}

mxArray* described(const FieldReport& report) {
  const char* names[] = {"orders", "precision", "nodes", "bound"};
  mxArray* const orders = mxCreateDoubleMatrix(1, 2, mxREAL);
  mxGetPr(orders)[0] = report.leastOrder;
  mxGetPr(orders)[1] = report.mostOrder;
  mxArray* const values[] = {orders, mxCreateString(precisionOf(report)),
                             mxCreateDoubleScalar(report.nodes),
                             mxCreateDoubleScalar(report.bound)};
  mxArray* const result = mxCreateStructMatrix(1, 1, 4, names);
  for (int n = 0; n < 4; ++n) mxSetField(result, 0, names[n], values[n]);
  return result;
}

void call(int nlhs, mxArray* plhs[], const mxArray* prhs[], ProgressBar& bar) {
  const Field field(pistonsOf(prhs[PISTONS]), numbersOf(prhs[K], 1)[0]);
  FieldOptions options = optionsFor(numberOf(prhs[ACCURACY]));
  options.progress = [&](double fraction) { bar.update(fraction); };
  FieldReport report;
  plhs[0] = pressures(field, prhs[WHERE], options, &report);
  bar.complete();
  if (nlhs > 1) plhs[1] = described(report);
}

}  // namespace
}  // namespace pistonfield

void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
  using namespace pistonfield;
  mexAtExit(releaseKeptDevices);
  std::optional<ProgressBar> bar;
  std::optional<FieldError> error;
  bool isStopped = false, isOutOfMemory = false;
  try {
    if (nrhs > 0 && mxIsChar(prhs[0])) {
      if (!callForPulse(nlhs, plhs, nrhs, prhs, bar)) callForArray(nlhs, plhs, nrhs, prhs);
    } else {
      require(nlhs <= 2 && nrhs == COUNT);
      call(nlhs, plhs, prhs, bar.emplace(prhs[BAR]));
    }
  } catch (const FieldError& caught) {
    error = caught;
  } catch (const Stopped&) {
    isStopped = true;
  } catch (const std::bad_alloc&) {
    isOutOfMemory = true;
  } catch (const std::length_error&) {
    isOutOfMemory = true;
  }
  mxArray* const failure = bar ? bar->failure() : nullptr;
  bar.reset();  // ends the line of the bar
  if (isStopped) endStoppedCall(failure);
  if (error) mexErrMsgIdAndTxt("pistonfield:field", "%s", error->what());
  if (isOutOfMemory) mexErrMsgTxt("There is not enough memory for this many points.");
}
