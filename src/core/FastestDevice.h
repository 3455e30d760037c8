#pragma once

namespace pistonfield {

/// Returns the device with the highest cores × multiprocessors × clock rate, or 0 if there is none.
/// If a device has a major compute capability above 2, only devices of the newest major capability
/// are considered. Writes a line to standard output for each capability whose number of cores is
/// unknown.
int fastestDevice();

}  // namespace pistonfield
