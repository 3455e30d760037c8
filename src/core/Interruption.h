#pragma once

namespace pistonfield {

/// Throws the host's own exception if the user has interrupted the call (Ctrl-C), and returns
/// otherwise. It is called only on the thread that made the call.
using InterruptionCheck = void (*)();

/// Sets the function that `checkInterruption` calls. nullptr, the initial state, disables it.
void setInterruptionCheck(InterruptionCheck check);

/// Long computations call this between pieces of work, where only objects own resources.
void checkInterruption();

}  // namespace pistonfield
