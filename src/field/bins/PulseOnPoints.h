#pragma once

#include <array>

#include "FastNearfield/intervals/GaussRules.h"
#include "lanes/InstructionSet.h"

// Pulses at a few points. Waves of a short pulse arrive from each node of the quadrature rules
// (PulseInPacks.h) at a time of its own. They are not added one by one: a node of weight w that
// arrives between two bins of time is divided among the eight next bins by Lagrange's polynomials,
// and in the end the bins are convolved with the pulse.
//
// The unit of time is the bin, and that of length what a wave travels in it.

namespace pistonfield {

/// Points that are evaluated together, with the same quadrature rules.
constexpr int pulsePoints = 8;

/// Into how many bins a node is divided: the bins from −3 to 4 next to it.
constexpr int binsOfNode = 8;

struct TimedPiston {
  double centre[3];              ///< in the unit of the points
  double axes[3][3];             ///< the directions of its own x, y and z, times bins a unit
  double halfWidth, halfHeight;  ///< in bins, above 0
  double weight;
  double delay;     ///< in bins
  float tolerance;  ///< of each integral along an edge, for the weight 1
};

/// What the orders of rules follow from.
struct PulseOrders {
  float mass, slope;  ///< of the spectrum, per bin
  /// The orders that oscillation needs for the error 2^-n, n = 0, 1, …, if the path changes by
  /// twice T bins: T = 2^(m/2 − 4) for even m, T = 1.5·2^((m − 1)/2 − 4) for odd m. They are
  /// weighted with the spectrum's mass or with its slope. 1e9 if no rule has enough nodes.
  static constexpr int errors = 48, paths = 32, leastPath = -4;
  float byMass[errors][paths], bySlope[errors][paths];
  GaussRuleTable<double> rules;
};

/// The bins of a group of points, the points' one after the other.
struct Bins {
  double* values;  ///< 0 at first
  double origin;   ///< the time of the first bin, an integer
  int count;       ///< of a point; nodes next to the ends are left out
};

/// What arrives at each point of a group, of all pistons that were added.
struct Arrivals {
  /// The first and the last wave, in bins.
  alignas(64) double first[pulsePoints], last[pulsePoints];
  /// The bins of its nodes, from the origin of the bins.
  alignas(64) double least[pulsePoints], most[pulsePoints];
  double nodes;
  bool isLost;  ///< whether a tolerance cannot be kept
};

/// Adds a piston to the bins of pulsePoints points, which are finite.
using AddTimedPiston = void(const PulseOrders& orders, const TimedPiston& piston, const double* x,
                            const double* y, const double* z, const Bins& bins, Arrivals& arrivals);

/// The pulse, sampled. One bin is step/phases samples; one of both is 1.
struct PulseTable {
  const double* values;  ///< at sample `first` of phase 0, after `padding` zeros
  int length;            ///< of a phase
  int stride;            ///< between phases: length + 2·padding
  int first;             ///< the number of a phase's first sample
  int step, phases;
  static constexpr int padding = 32;
};

/// Adds the bins from `from` to `to`, of which bin 0 is the bin `origin` of all times, to `count`
/// samples, a multiple of `padding`, from the sample `sample` of all times on.
using ConvolvePulse = void(const PulseTable& table, const double* bins, long long origin, int from,
                           int to, long long sample, int count, double* to_);

struct PulseFunctions {
  AddTimedPiston* add;
  ConvolvePulse* convolve;
};

/// Returns the functions for an instruction set. This machine must have the set.
PulseFunctions pulseFunctions(InstructionSet set);

/// The functions, each in a file that is compiled for its instruction set.
extern const PulseFunctions pulseFunctionsSse2, pulseFunctionsAvx2, pulseFunctionsAvx512,
    pulseFunctionsNeon;

}  // namespace pistonfield
