#pragma once

namespace pistonfield {

/// If the user has interrupted the call (Ctrl-C), ends it as the host does. Each host has its own
/// implementation.
void endInterruptedCall();

}  // namespace pistonfield
