#pragma once

// A kernel calls
//
//     evaluatePoints(piston, points, results),
//
// where thread n computes point n. The number of a thread is one unsigned 32-bit number, counted
// across all blocks; the shape of the grid of blocks has no other meaning. Threads beyond the last
// point do nothing.
//
// On a GPU each thread evaluates its point. On the emulation device a core takes many threads at
// once and evaluates their points in packs.

#if defined(__CUDACC__)
#include "FastNearfield/EvaluatePointsOnGpu.h"
#else
#include "FastNearfield/EvaluatePointsInPacks.h"
#endif
