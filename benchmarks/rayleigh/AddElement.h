#pragma once

#include "benchmarks/rayleigh/RayleighSum.h"

namespace rayleigh {

/// Adds an element's pressures at `count` points, a multiple of `pointsTogether`, to re and im.
using AddElement = void(const Element& element, const float* x, const float* y, const float* z,
                        int count, float* re, float* im);

constexpr int pointsTogether = 16;

/// Each in a file that is compiled for its instruction set.
AddElement addElementSse2, addElementAvx2, addElementAvx512, addElementNeon;

}  // namespace rayleigh
