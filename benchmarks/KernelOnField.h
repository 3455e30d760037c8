#pragma once

#include <cstdint>
#include <vector>

#include "core/Complex.h"
#include "core/DeviceBuffer.h"

/// The kernel for a list of points of the field, with buffers that are already allocated.
class KernelOnField {
 public:
  explicit KernelOnField(const std::vector<float>& positions);

  /// Whether there is a device with enough memory for the points; if not, `notReady` is the
  /// message.
  bool isReady() const { return ready_; }
  static constexpr const char* notReady = "no device, or not enough of its memory";

  /// Loads the rule that every run uses from now on.
  static void setOrder(int order);

  /// Runs the kernel and waits for it. A failure calls the error handler.
  void run();

  int points() const { return points_; }

  /// The number of times that a run evaluates the integrand with a rule of this order.
  std::int64_t nodes(int order) const { return nodesOfOrderOne_ * order; }

 private:
  int points_;
  std::vector<float> positions_;
  std::vector<pistonfield::Complex> pressures_;
  pistonfield::DeviceBuffer<float> d_pos_;
  pistonfield::DeviceBuffer<pistonfield::Complex> d_array_;
  std::int64_t nodesOfOrderOne_;
  bool ready_;
};
