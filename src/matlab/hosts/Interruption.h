#pragma once

namespace pistonfield {

/// Returns whether the user has interrupted the current call (Ctrl-C). Each host has its own
/// implementation.
bool isInterrupted();

/// If the user has interrupted the current call, ends it as the host does. Each host has its own
/// implementation.
void endInterruptedCall();

}  // namespace pistonfield
