#pragma once

#include <cstddef>

#include "field/field.h"

namespace pistonfield {

/// The rows of a grid along one of its axes: points with a common step.
struct Rows {
  std::size_t length, count;
  std::size_t stride;  ///< between the indices of neighbours in a row
  Position step;       ///< from a point to the next in its row
  double deviation;    ///< the largest distance of a point from where the step puts it

  /// The index of the first point of a row.
  std::size_t first(std::size_t row) const { return row / stride * stride * length + row % stride; }
};

/// Where a field is evaluated.
class Points {
 public:
  virtual ~Points() = default;

  /// Positions whose convex hull contains all points; none if the points are not those of a grid.
  virtual std::vector<Position> corners() const { return {}; }

  /// How far positions may be from where they should be, if they are computed.
  virtual double shift() const { return 0; }

  /// The rows along each axis of a grid; none if the points are not those of a grid.
  virtual std::vector<Rows> rows() const { return {}; }

  /// Writes the coordinates of the points first ... first + count - 1.
  virtual void read(std::size_t first, std::size_t count, double* x, double* y,
                    double* z) const = 0;

  std::size_t count() const { return count_; }

  Position position(std::size_t n) const {
    double x = 0, y = 0, z = 0;
    read(n, 1, &x, &y, &z);
    return {x, y, z};
  }

 protected:
  explicit Points(std::size_t count) : count_(count) {}
  Points(const Points&) = default;
  Points& operator=(const Points&) = default;

 private:
  std::size_t count_;
};

class ListPoints final : public Points {
 public:
  ListPoints(const Position* points, std::size_t count) : Points(count), points_(points) {}
  void read(std::size_t first, std::size_t count, double* x, double* y, double* z) const override;

 private:
  const Position* points_;
};

class AxesPoints final : public Points {
 public:
  /// Throws a FieldError if the grid has more points than an array can hold.
  explicit AxesPoints(const AxesGrid& grid, double shift = 0);
  double shift() const override { return shift_; }
  std::vector<Position> corners() const override;
  std::vector<Rows> rows() const override;
  void read(std::size_t first, std::size_t count, double* x, double* y, double* z) const override;

 private:
  const AxesGrid& grid_;
  double shift_;
};

class AffinePoints final : public Points {
 public:
  /// Throws a FieldError if the grid has more points than an array can hold.
  explicit AffinePoints(const AffineGrid& grid);
  std::vector<Position> corners() const override;
  double shift() const override;
  std::vector<Rows> rows() const override;
  void read(std::size_t first, std::size_t count, double* x, double* y, double* z) const override;

 private:
  const AffineGrid& grid_;
};

/// Up to 256 finite points, from the whole range.
std::vector<Position> somePoints(const Points& points);

}  // namespace pistonfield
