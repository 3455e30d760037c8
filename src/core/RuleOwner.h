#pragma once

namespace pistonfield {

enum class Precision { SINGLE, DOUBLE };

// Which thread has loaded the quadrature rules that are on the device. The rules themselves are in
// the constant memory of RectangularPistonCuda.cu and .dp.cu; loadRule() in LauncherSteps.h writes
// them. Callers hold the DeviceLock.

/// Records that the calling thread has loaded a rule of this precision.
void noteRule(Precision precision);

/// Records that the rule of this precision is about to be overwritten.
void forgetRule(Precision precision);

/// Returns whether the calling thread loaded the device's rule of this precision.
bool hasOwnRule(Precision precision);

/// Records that the device holds no rule.
void forgetRules();

}  // namespace pistonfield
