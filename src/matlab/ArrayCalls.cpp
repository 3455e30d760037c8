#include "matlab/ArrayCalls.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "field/arrays.h"
#include "field/beam.h"
#include "field/lens.h"
#include "matlab/HostArrays.h"

// The arguments of the functions for arrays come as users pass them, converted to double. A count
// that is none is passed on as 0, which arrays.h refuses, as it does NaN.

namespace pistonfield {
namespace {

using Pistons = std::vector<Field::Piston>;

std::vector<std::size_t> countsOf(const mxArray* array) {
  std::vector<std::size_t> counts;
  for (const double value : realsOf(array))
    counts.push_back(value >= 1 && value <= 1e9 && value == std::floor(value)
                         ? static_cast<std::size_t>(value)
                         : 0);
  return counts;
}

std::size_t countOf(const mxArray* array) {
  const std::vector<std::size_t> counts = countsOf(array);
  return counts.size() == 1 ? counts[0] : 0;
}

/// Two values; all are `otherwise` if there are not two.
template <class T>
std::array<T, 2> pairOf(const std::vector<T>& values, T otherwise) {
  if (values.size() != 2) return {otherwise, otherwise};
  return {values[0], values[1]};
}

mxArray* centresOf(const Pistons& pistons) {
  std::vector<double> values;
  for (const Field::Piston& piston : pistons)
    values.insert(values.end(), piston.centre.begin(), piston.centre.end());
  return arrayOf(values, {3, static_cast<mwSize>(pistons.size())});
}

mxArray* axesOf(const Pistons& pistons) {
  std::vector<double> values;
  for (const Field::Piston& piston : pistons)
    for (const Position& axis : piston.axes) values.insert(values.end(), axis.begin(), axis.end());
  return arrayOf(values, {3, 3, static_cast<mwSize>(pistons.size())});
}

mxArray* weightsOf(const Pistons& pistons) {
  std::vector<std::complex<double>> weights;
  for (const Field::Piston& piston : pistons) weights.push_back(piston.weight);
  return arrayOf(weights, {static_cast<mwSize>(weights.size()), 1});
}

/// The struct that pistonarray takes; the rotations only on request.
mxArray* structOf(const Pistons& pistons, bool withRotations) {
  const char* names[] = {"l", "s", "positions", "rotations"};
  mxArray* const result = mxCreateStructMatrix(1, 1, withRotations ? 4 : 3, names);
  mxSetField(result, 0, "l", mxCreateDoubleScalar(pistons[0].height));
  mxSetField(result, 0, "s", mxCreateDoubleScalar(pistons[0].width));
  mxSetField(result, 0, "positions", centresOf(pistons));
  if (withRotations) mxSetField(result, 0, "rotations", axesOf(pistons));
  return result;
}

/// The struct that pistonsOf reads.
mxArray* structOf(const Pistons& pistons) {
  const char* names[] = {"widths", "heights", "centres", "axes", "weights"};
  std::vector<double> widths, heights;
  for (const Field::Piston& piston : pistons) {
    widths.push_back(piston.width);
    heights.push_back(piston.height);
  }
  mxArray* const values[] = {columnOf(widths), columnOf(heights), centresOf(pistons),
                             axesOf(pistons), weightsOf(pistons)};
  mxArray* const result = mxCreateStructMatrix(1, 1, 5, names);
  for (int n = 0; n < 5; ++n) mxSetField(result, 0, names[n], values[n]);
  return result;
}

/// The weights after steering or focusing, `aim`, at one point.
template <class Aim>
mxArray* aimed(const mxArray* prhs[], Aim aim) {
  const Position* const centres = positionsOf(prhs[1]);
  Pistons pistons(mxGetN(prhs[1]));
  const std::vector<std::complex<double>> weights = numbersOf(prhs[2], pistons.size());
  const Position* const at = positionsOf(prhs[3]);
  require(mxGetN(prhs[3]) == 1);
  for (std::size_t m = 0; m < pistons.size(); ++m) {
    pistons[m].centre = centres[m];
    pistons[m].weight = weights[m];
  }
  pistons = aim(pistons, *at, numbersOf(prhs[4], 1)[0]);
  return weightsOf(pistons);
}

/// The columns of the beams of columns along x: peak, position, width, left and right edge.
mxArray* beamsOf(const mxArray* prhs[]) {
  const std::vector<double> x = realsOf(prhs[1]);
  const std::size_t count = mxGetN(prhs[2]);
  const std::vector<std::complex<double>> p = numbersOf(prhs[2], mxGetM(prhs[2]) * count);
  require(x.size() < 2 || x.size() == mxGetM(prhs[2]));  // beams refuses less than two
  const std::vector<Beam> found = beams(x, p.data(), count, scalarOf(prhs[3]));
  mxArray* const result = realArray({5, static_cast<mwSize>(count)});
  double* to = mxGetPr(result);
  for (const Beam& beam : found)
    for (const double number : {beam.peak, beam.position, beam.width, beam.left, beam.right})
      *to++ = number;
  return result;
}

}  // namespace

void callForArray(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
  const std::string what = textOf(prhs[0]);
  const auto is = [&](const char* name, int arguments) {
    return what == name && nlhs <= 1 && nrhs == 1 + arguments;
  };
  if (is("linear", 4))
    plhs[0] = structOf(
        linearArray(countOf(prhs[1]), scalarOf(prhs[2]), scalarOf(prhs[3]), scalarOf(prhs[4])),
        false);
  else if (is("matrix", 4))
    plhs[0] = structOf(
        matrixArray(pairOf<std::size_t>(countsOf(prhs[1]), 0),
                    pairOf(realsOf(prhs[2]), std::nan("")), scalarOf(prhs[3]), scalarOf(prhs[4])),
        false);
  else if (is("convex", 5))
    plhs[0] = structOf(convexArray(countOf(prhs[1]), scalarOf(prhs[2]), scalarOf(prhs[3]),
                                   scalarOf(prhs[4]), scalarOf(prhs[5])),
                       true);
  else if (is("apodization", 2))
    plhs[0] = columnOf(apodization(textOf(prhs[1]), countsOf(prhs[2])));
  else if (is("apodization", 3))
    plhs[0] = columnOf(apodization(textOf(prhs[1]), countsOf(prhs[2]), scalarOf(prhs[3])));
  else if (is("steered", 4))
    plhs[0] = aimed(prhs, steered);
  else if (is("focused", 4))
    plhs[0] = aimed(prhs, focused);
  else if (is("lensed", 4))
    plhs[0] = structOf(
        lensed(pistonsOf(prhs[1]), scalarOf(prhs[2]), numbersOf(prhs[3], 1)[0], scalarOf(prhs[4])));
  else if (is("beams", 3))
    plhs[0] = beamsOf(prhs);
  else
    require(false);
}

}  // namespace pistonfield
