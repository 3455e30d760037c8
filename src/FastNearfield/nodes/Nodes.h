#pragma once

#include "FastNearfield/NodeSum.h"

// A pair for each instruction set, in a file of its own that is compiled for it.

namespace pistonfield {

SumNodes<float> nodesSse2, nodesAvx2, nodesAvx512, nodesNeon;
SumNodes<double> nodesSse2, nodesAvx2, nodesAvx512, nodesNeon;

}  // namespace pistonfield
