#include "matlab/hosts/Interruption.h"

#include "mex.h"

void pistonfield::endInterruptedCall() { mexEndInterruptedCall(); }
