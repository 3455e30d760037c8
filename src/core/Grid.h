#pragma once

#include <cstddef>
#include <vector>

#include "core/Vector.h"

namespace pistonfield {

/// A set of positions, in the unit of the piston's sides.
template <class T>
class Grid {
 public:
  virtual ~Grid() = default;

  /// Position i, 0 ≤ i < nbPositions(); i is not checked.
  virtual MVector<T, 3> getPosition(int i) const = 0;

  unsigned nbPositions() const { return nbPositions_; }

 protected:
  explicit Grid(unsigned nbPositions) : nbPositions_(nbPositions) {}
  Grid(const Grid&) = default;
  Grid& operator=(const Grid&) = default;

 private:
  unsigned nbPositions_;
};

/// An explicit list of positions, all zero until written through `positions`.
template <class T>
class GridUnstructured final : public Grid<T> {
 public:
  explicit GridUnstructured(unsigned nbPositions) : Grid<T>(nbPositions), positions(nbPositions) {}

  /// The same, written with the x, y, z that stand one after the other at `components`.
  GridUnstructured(unsigned nbPositions, const T* components)
      : Grid<T>(nbPositions), positions(first(components), first(components) + nbPositions) {}

  MVector<T, 3> getPosition(int i) const override { return positions[static_cast<std::size_t>(i)]; }

  std::vector<MVector<T, 3>> positions;

 private:
  /// Vectors are their components alone, so that a list of them is copied in one go.
  static const MVector<T, 3>* first(const T* components) {
    static_assert(sizeof(MVector<T, 3>) == 3 * sizeof(T));
    return reinterpret_cast<const MVector<T, 3>*>(components);
  }
};

}  // namespace pistonfield
