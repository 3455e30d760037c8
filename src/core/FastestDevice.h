#pragma once

namespace pistonfield {

/// The device with the highest cores × multiprocessors × clock; where one of a compute capability
/// above 2 is found, only the newest major capability counts. 0 if there is none at all. Says on
/// standard output when it does not know a capability's number of cores.
int fastestDevice();

}  // namespace pistonfield
