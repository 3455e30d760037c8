#pragma once

namespace pistonfield {

/// Returns the device with the highest cores × multiprocessors × clock rate, or 0 if there is none.
/// The numbers of cores are known for compute capabilities 1.x and 2.x only. Writes a line to
/// standard output for each other capability, whose product is negative: among such devices it
/// returns device 0. If a major capability is above 2, only devices of the newest one are
/// considered.
int fastestDevice();

}  // namespace pistonfield
