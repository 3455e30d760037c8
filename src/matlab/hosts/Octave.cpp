#include <quit.h>

#include "matlab/hosts/Interruption.h"

void pistonfield::endInterruptedCall() { octave_quit(); }
