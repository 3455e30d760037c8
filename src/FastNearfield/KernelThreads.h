#pragma once

// A kernel calls
//
//     evaluate(piston, points, results),
//
// where thread n computes point n. The number of a thread is one unsigned 32-bit number, counted
// across all blocks; the shape of the grid of blocks has no other meaning. Threads beyond the last
// point do nothing.

#if defined(__CUDACC__)
#include "FastNearfield/GpuThreads.h"
#else
#include "FastNearfield/EmulatedThreads.h"
#endif
