#include <mex.h>

#include "matlab/hosts/Interruption.h"

// Defined in libut, which has no header.
extern "C" bool utIsInterruptPending();

bool pistonfield::isInterrupted() { return utIsInterruptPending(); }

// The interruption is still pending in MATLAB, which shows its own text instead of this one.
void pistonfield::endInterruptedCall() {
  if (isInterrupted()) mexErrMsgTxt("Operation terminated by user.");
}
