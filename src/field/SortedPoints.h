#pragma once

#include <functional>
#include <vector>

#include "field/Points.h"

namespace pistonfield {

/// Points of a list in an order in which neighbours in space follow each other (along a Z-order
/// curve): points that are evaluated together then need similar orders.
class SortedPoints final : public Points {
 public:
  /// Keeps the pointer. A long list is sorted in blocks, between which `progress` is called with 0,
  /// if it is not empty.
  SortedPoints(const Position* points, std::size_t count,
               const std::function<void(double)>& progress);
  void read(std::size_t first, std::size_t count, double* x, double* y, double* z) const override;

  /// Where each of these points is in the list.
  const std::vector<std::size_t>& indices() const { return indices_; }

  /// Values in the order of the list, from those in the order of these points.
  std::vector<std::complex<double>> inListOrder(
      const std::vector<std::complex<double>>& values) const;

 private:
  const Position* points_;
  std::vector<std::size_t> indices_;
};

}  // namespace pistonfield
