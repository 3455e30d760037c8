#pragma once

namespace pistonfield {

/// Ends the call the way its host ends one that the user interrupts (Ctrl-C), if the user did.
/// Each host has its own.
void endInterruptedCall();

}  // namespace pistonfield
