#pragma once

#include <cstddef>
#include <vector>

#include "Vector.h"

namespace pistonfield {

/// A set of positions, in the unit of the piston's sides.
template <class T>
class Grid {
 public:
  virtual ~Grid() = default;

  /// Position i, where 0 ≤ i < nbPositions(). GridUnstructured does not check i; Grid3DR does.
  virtual MVector<T, 3> getPosition(int i) const = 0;

  unsigned nbPositions() const { return nbPositions_; }

 protected:
  explicit Grid(unsigned nbPositions) : nbPositions_(nbPositions) {}
  Grid(const Grid&) = default;
  Grid& operator=(const Grid&) = default;

 private:
  unsigned nbPositions_;
};

/// A list of positions. Write them through `positions`.
template <class T>
class GridUnstructured final : public Grid<T> {
 public:
  /// All positions are zero.
  explicit GridUnstructured(unsigned nbPositions) : Grid<T>(nbPositions), positions(nbPositions) {}

  MVector<T, 3> getPosition(int i) const override { return positions[static_cast<std::size_t>(i)]; }

  std::vector<MVector<T, 3>> positions;
};

}  // namespace pistonfield
