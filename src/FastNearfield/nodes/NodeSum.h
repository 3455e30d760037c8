#pragma once

#include "lanes/InstructionSet.h"

// The sum over the nodes of a rule for RectangularPiston2OnCpu.cpp, the evaluation with useGPU off.
// No call of the gateway reaches it. The sums of the kernels, with and without a GPU, are in
// point/PointPressure.h and packs/PackEvaluation.h.

namespace pistonfield {

/// The nodes of a rule and their images on an interval, in arrays that do not overlap. If `map` is
/// set, the images must be computed first: half·x + mid for a node, half·w for a weight.
template <class T>
struct NodeImages {
  const T* x;
  const T* w;
  T* mappedX;
  T* mappedW;
  bool map;
  T half, mid;
};

/// The integrand of RectangularPistonCuda2::FirstIntegral, in plain numbers.
template <class T>
struct NodeIntegrand {
  T s2, k, z, expKzRe, expKzIm;
};

template <class T>
struct NodeSum {
  T re, im;
};

/// Returns the sum of weights times the integrand, added in the order of the nodes. All instruction
/// sets give the same bits. The sum is valid if both parts are finite; otherwise a term is not
/// finite or a phase exceeds 2²⁸.
template <class T>
using SumNodes = NodeSum<T>(const NodeImages<T>& nodes, int count, const NodeIntegrand<T>& f);

/// Returns the function for an instruction set. This machine must have the set.
template <class T>
SumNodes<T>* sumNodes(InstructionSet set);

/// Declarations of functions with this signature, each defined in a file that is compiled for its
/// instruction set.
SumNodes<float> nodesSse2, nodesAvx2, nodesAvx512, nodesNeon;
SumNodes<double> nodesSse2, nodesAvx2, nodesAvx512, nodesNeon;

}  // namespace pistonfield
