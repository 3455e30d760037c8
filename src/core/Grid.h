#pragma once

#include <cstddef>
#include <memory>
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

/// Leaves new elements as their memory is, where no value is given for them.
template <class T>
struct UnwrittenAllocator : std::allocator<T> {
  UnwrittenAllocator() = default;
  template <class U>
  explicit UnwrittenAllocator(const UnwrittenAllocator<U>& /*other*/) noexcept {}

  template <class U>
  struct rebind {
    using other = UnwrittenAllocator<U>;
  };

  template <class U>
  void construct(U* /*element*/) noexcept {}
};

/// That the positions of a list are written next, so that they need not be zeros before.
struct WrittenNext {};

/// An explicit list of positions, which are written through `positions`. Those that are appended to
/// it without a value hold none.
template <class T>
class GridUnstructured final : public Grid<T> {
 public:
  /// All are zero.
  explicit GridUnstructured(unsigned nbPositions)
      : Grid<T>(nbPositions), positions(nbPositions, MVector<T, 3>()) {}

  /// All must be written before they are read.
  GridUnstructured(unsigned nbPositions, WrittenNext /*tag*/)
      : Grid<T>(nbPositions), positions(nbPositions) {}

  MVector<T, 3> getPosition(int i) const override { return positions[static_cast<std::size_t>(i)]; }

  std::vector<MVector<T, 3>, UnwrittenAllocator<MVector<T, 3>>> positions;
};

}  // namespace pistonfield
