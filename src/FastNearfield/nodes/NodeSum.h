#pragma once

#include "lanes/InstructionSet.h"

namespace pistonfield {

/// The nodes of a rule and their images on an interval, in arrays that do not overlap. With `map`
/// the images are still to be written: half·x + mid of a node, half·w of a weight.
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

/// The sum of weights times the integrand, one node after the other; the same bits whatever the
/// instruction set. It holds if both parts are finite, and otherwise says only that a term is not
/// finite or that a phase exceeds 2²⁸.
template <class T>
using SumNodes = NodeSum<T>(const NodeImages<T>& nodes, int count, const NodeIntegrand<T>& f);

/// The one for an instruction set, which this machine must have.
template <class T>
SumNodes<T>* sumNodes(InstructionSet set);

/// A pair for each set, in a file of its own that is compiled for it.
SumNodes<float> nodesSse2, nodesAvx2, nodesAvx512, nodesNeon;
SumNodes<double> nodesSse2, nodesAvx2, nodesAvx512, nodesNeon;

}  // namespace pistonfield
