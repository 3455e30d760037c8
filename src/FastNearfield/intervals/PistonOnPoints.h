#pragma once

#include "FastNearfield/intervals/GaussRules.h"
#include "lanes/InstructionSet.h"

namespace pistonfield {

/// A piston whose field is added to a sum at many points. Lengths are in wavelengths unless stated
/// otherwise.
struct WeightedPiston {
  double centre[3];              ///< in the unit of the points
  double axes[3][3];             ///< the directions of its own x, y and z, times wavelengths a unit
  double halfWidth, halfHeight;  ///< half its sides along its own x and y, at least 0
  double weightRe, weightIm, weightMagnitude;
  double shift;          ///< how far points may be from where they are given
  double relativeShift;  ///< the same, relative to the distance, by the axes' rounding; or relative
                         ///< to each coordinate, unless the piston is turned
  double decay;          ///< of a wave, in nepers a wavelength; 0 without loss
  double tolerance;      ///< the largest error of its pressure, for the weight 1
  bool isTurned;         ///< whether its own axes are not those of the points
  int order;             ///< of every interval; 0: chosen for the tolerance
  GaussRuleTable<float> rules;  ///< up to mostIntervalOrder, or up to `order`
  GaussRuleTable<double> preciseRules;
};

/// Intervals that need more nodes are divided.
constexpr int mostIntervalOrder = 64;

/// What evaluations used, for all calls with the same record.
struct Used {
  int leastOrder, mostOrder;  ///< initially the largest int, and 0
  long long nodes;            ///< values of the integrand
  bool single, precise;       ///< whether intervals were evaluated in single, in double precision
  /// The largest bound of an error over the part of the tolerance that it may take: above 1, the
  /// tolerance is not kept.
  double excess;
  /// A bound of the error of the sum of the pistons' pressures at a tile that the rounding of
  /// coordinates causes.
  double positionError;
};

/// Adds the piston's pressures at `count` points (a multiple of pointsMultiple) to re + i·im. The
/// points are finite.
using AddPiston = void(const WeightedPiston& piston, const double* x, const double* y,
                       const double* z, int count, double* re, double* im, Used& used);

/// The number of lanes of every instruction set divides it.
constexpr int pointsMultiple = 16;

/// Returns the function for an instruction set. This machine must have the set. AVX-512 has two;
/// one is for machines that divide slowly.
AddPiston* addPiston(InstructionSet set, bool slowDivision = dividesSlowly());

/// The functions, each in a file that is compiled for its instruction set.
AddPiston addPistonSse2, addPistonAvx2, addPistonAvx512, addPistonAvx512SlowDivision, addPistonNeon;

}  // namespace pistonfield
