#pragma once

namespace pistonfield {

enum class Precision { SINGLE, DOUBLE };

// Which quadrature rules the device holds, and who loaded them. Callers hold the DeviceLock.

/// The calling thread has loaded a rule of that precision.
void noteRule(Precision precision);

/// The device's rule of that precision is about to be overwritten.
void forgetRule(Precision precision);

/// Whether the device's rule of that precision is the one that the calling thread loaded last.
bool hasOwnRule(Precision precision);

/// The device holds no rules any more.
void forgetRules();

}  // namespace pistonfield
