#pragma once

namespace pistonfield {

/// Returns the device with the highest cores × multiprocessors × clock rate, or 0 if there is none.
/// The numbers of cores are known for compute capabilities 1.x and 2.x only. For each other
/// capability, writes a line to standard output and takes the number of cores as −1, so that the
/// product is negative: if this holds for all devices, returns 0. If a major capability is above 2,
/// only devices of the newest one are considered.
int fastestDevice();

}  // namespace pistonfield
