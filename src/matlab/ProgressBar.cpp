#include "matlab/ProgressBar.h"

#include "matlab/HostArrays.h"
#include "matlab/hosts/Interruption.h"

namespace pistonfield {

ProgressBar::ProgressBar(const mxArray* bar)
    : bar_(mxIsEmpty(bar) ? nullptr : const_cast<mxArray*>(bar)) {}

ProgressBar::~ProgressBar() {
  if (shown_ > 0) mexPrintf("\n");
}

void ProgressBar::update(double fraction) {
  if (isInterrupted()) throw Stopped();
  if (bar_ && fraction > 0 && fraction < 1 && Clock::now() >= next_) show(fraction);
}

void ProgressBar::complete() {
  if (shown_ > 0) show(1);
}

void ProgressBar::show(double fraction) {
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

}  // namespace pistonfield
