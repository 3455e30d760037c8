#pragma once

namespace pistonfield {

/// Asks the host whether its user wants the call to end, and if so throws: what the host itself
/// throws then. Called on the thread that made the call, and on no other.
using InterruptionCheck = void (*)();

/// From now on `checkInterruption` calls this one; none with nullptr, which is so at the start.
void setInterruptionCheck(InterruptionCheck check);

/// To be called every now and then in long work, where nothing but objects holds resources.
void checkInterruption();

}  // namespace pistonfield
