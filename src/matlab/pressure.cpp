#include <mex.h>

#include <chrono>
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
#include "matlab/hosts/Interruption.h"

// pistonfield_pressure, for the functions in functions/.
// src/matlab/functions/pistonfield_pressure.m describes its calls. Here are those for pressures,
// and the errors of all.
//
// An error of the host must not pass through Field, so the work is ended by a Stopped, and the
// error is raised after that. (In Octave an interruption of the progress bar passes through Field,
// as an exception of C++.)

namespace pistonfield {
namespace {

enum Argument { WHERE, PISTONS, K, ACCURACY, BAR, COUNT };

double number(const mxArray* array) {
  require(isReal(array) && mxGetNumberOfElements(array) == 1);
  return mxGetScalar(array);
}

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
  const double* const values = mxGetPr(axis);
  return {values, values + mxGetNumberOfElements(axis)};
}

/// Ends the work of a Field.
struct Stopped {};

/// Shows the progress of a call, by the function `bar` of the host, and ends it on Ctrl-C.
class ProgressBar {
 public:
  /// `bar` may be an empty array.
  explicit ProgressBar(const mxArray* bar)
      : bar_(mxIsEmpty(bar) ? nullptr : const_cast<mxArray*>(bar)) {}
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar() {
    if (shown_ > 0) mexPrintf("\n");
  }

  /// Throws Stopped if the user has interrupted the call or the bar has failed.
  void update(double fraction) {
    if (isInterrupted()) throw Stopped();
    if (bar_ && fraction > 0 && fraction < 1 && Clock::now() >= next_) show(fraction);
  }

  /// Shows that the work is complete, if a bar is shown.
  void complete() {
    if (shown_ > 0) show(1);
  }

  /// The error of the function, or null if there was none.
  mxArray* failure() const { return failure_; }

 private:
  using Clock = std::chrono::steady_clock;

  void show(double fraction) {
    const std::chrono::duration<double> seconds = Clock::now() - start_;
    mxArray* arguments[] = {bar_, mxCreateDoubleScalar(fraction),
                            mxCreateDoubleScalar(seconds.count()), mxCreateDoubleScalar(shown_)};
    mxArray* shown = nullptr;
    failure_ = mexCallMATLABWithTrap(1, &shown, 4, arguments, "feval");
    if (failure_) throw Stopped();
    shown_ = isReal(shown) && mxGetNumberOfElements(shown) == 1 ? mxGetScalar(shown) : 0;
    for (mxArray* const array : {arguments[1], arguments[2], arguments[3], shown})
      mxDestroyArray(array);
    next_ = Clock::now() + std::chrono::milliseconds(100);
  }

  mxArray* const bar_;  // the host's functions take it as not const
  const Clock::time_point start_ = Clock::now();
  Clock::time_point next_ = start_ + std::chrono::milliseconds(500);
  double shown_ = 0;  // how many characters
  mxArray* failure_ = nullptr;
};

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
  FieldOptions options = optionsFor(number(prhs[ACCURACY]));
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
      callForArray(nlhs, plhs, nrhs, prhs);
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
