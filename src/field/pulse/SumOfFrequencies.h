#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <vector>

#include "field/Work.h"
#include "field/pulse/Frequencies.h"
#include "field/pulse/Link.h"
#include "field/pulse/WaveDuration.h"

namespace pistonfield {

/// A point, and when waves reach it.
struct Target {
  Position point;
  std::size_t index;  ///< in the list
  Reach reach;
};

/// Where the signal of a target is to be added: at the times start, start + step, …
struct Axis {
  double start, step;
  std::size_t count;
  double* signal;

  /// The part of it from one time to another.
  Axis between(double begin, double end) const {
    const auto index = [&](double steps) {
      return static_cast<std::size_t>(std::clamp(steps, 0.0, static_cast<double>(count)));
    };
    const std::size_t first = index(std::ceil((begin - start) / step)),
                      last = index(std::floor((end - start) / step) + 1);
    return {start + static_cast<double>(first) * step, step, last > first ? last - first : 0,
            signal + first};
  }
};

using AxisOf = std::function<Axis(const Target& target)>;

/// The signals at some points for an absolute tolerance.
class SumOfFrequencies {
 public:
  /// Keeps the link. Throws a FieldError if frequencies that matter are out of range.
  SumOfFrequencies(const Link& link, const std::vector<Target>& targets, double tolerance,
                   const std::function<void(double)>& progress);

  /// How many frequencies there are, and the largest; 0 if there is none.
  std::size_t count() const;
  double mostOmega() const;

  /// An upper bound of the errors so far, its part that the pressures have no part in, and what
  /// that should be at most.
  double bound() const { return bound_; }
  double neglected() const { return neglected_; }
  double mostNeglected() const;

  /// How many values of integrands.
  double nodes() const { return nodes_; }

  /// Adds the signals of the targets to their axes.
  void add(const std::vector<Target>& targets, const AxisOf& axisOf,
           const std::function<void(double)>& progress);

 private:
  /// The frequencies of a band.
  struct Part {
    WaveDuration duration;
    Frequencies frequencies;
  };

  void add(const Part& part, const std::vector<Target>& targets, const AxisOf& axisOf, Work& work);
  std::size_t pointsInBlock(std::size_t frequencies, std::size_t times) const;
  static std::size_t timesInPiece(std::size_t frequencies, std::size_t points);
  double roundingOf(const std::vector<Frequency>& kept, const std::vector<Target>& targets,
                    const AxisOf& axisOf) const;

  const Link& link_;
  double tolerance_ = 0;  // of a part
  std::vector<Part> parts_;
  double limit_ = 0;  // of pressures, multiplied
  double neglected_ = 0, bound_ = 0, nodes_ = 0;
};

/// The extremes among targets.
Extent extentOf(const std::vector<Target>& targets);

}  // namespace pistonfield
