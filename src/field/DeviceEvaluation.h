#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "FastNearfield/intervals/PistonsOnDevice.h"
#include "core/DeviceBuffer.h"
#include "core/DeviceLock.h"

namespace pistonfield {

/// The sums of pistons' pressures at points, on the calling thread's current device.
///
/// All memory is allocated on construction, on the host and on the device: a fixed amount for a
/// point, of which there are at most `mostPoints` at once, and one for a piston. The device is
/// locked until the object is destroyed; it then stays started. All functions throw a FieldError if
/// the device fails.
class DeviceEvaluation {
 public:
  static constexpr std::size_t mostPoints = 1 << 18;

  /// Whether there is a GPU, and the work is large enough for it.
  static bool isFaster(std::size_t points, std::size_t pistons);

  /// How many points times pistons one launch evaluates: some hundredths of a second.
  static constexpr std::size_t launchWork = 1 << 25;

  /// At least one piston and one point. The pistons' rules are `rules` and `preciseRules`.
  DeviceEvaluation(const std::vector<WeightedPiston>& pistons, const GaussRules<float>& rules,
                   const GaussRules<double>& preciseRules, std::size_t points);

  /// The coordinates of the points, to be set before `run`. They are finite.
  double* x() { return x_.values.data(); }
  double* y() { return y_.values.data(); }
  double* z() { return z_.values.data(); }

  /// Evaluates the first `count` points. Calls progress(fraction) after each launch, with the
  /// fraction of the pistons that it added.
  void run(std::size_t count, const std::function<void(double)>& progress,
           std::size_t workOfLaunch = launchWork);

  const std::vector<double>& re() const { return re_.values; }
  const std::vector<double>& im() const { return im_.values; }
  const std::vector<UsedAtPoint>& used() const { return used_.values; }

 private:
  /// An array on the host and its copy on the device.
  template <class T>
  struct Array {
    explicit Array(std::vector<T> content);
    void upload();
    void download();

    std::vector<T> values;
    DeviceBuffer<T> onDevice;
  };

  const DeviceLock lock_;
  Array<float> fromStart_, w_;
  Array<double> preciseFromStart_, preciseW_;
  Array<WeightedPiston> pistons_;
  Array<double> x_, y_, z_, re_, im_;
  Array<UsedAtPoint> used_;
};

}  // namespace pistonfield
