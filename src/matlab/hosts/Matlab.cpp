#include <mex.h>

#include "matlab/hosts/Interruption.h"

// In libut, which has no header.
extern "C" bool utIsInterruptPending();

// MATLAB, which still has the user's wish pending, shows its own text in place of this one.
void pistonfield::endInterruptedCall() {
  if (utIsInterruptPending()) mexErrMsgTxt("Operation terminated by user.");
}
