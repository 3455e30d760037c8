#include <quit.h>

#include "matlab/hosts/Interruption.h"

bool pistonfield::isInterrupted() { return octave_interrupt_state > 0; }

void pistonfield::endInterruptedCall() { octave_quit(); }
