#pragma once

#include "core/CudaStorage.h"
#include "core/Grid3DR.h"

namespace pistonfield {

/// A source of sound that computes its complex pressure on a regular grid: real and imaginary part
/// of each point in turn, in the grid's order.
class Transducer {
 public:
  virtual ~Transducer() = default;

  /// Into an array of 2·nbPositions() floats.
  virtual void compute(float* out, const Grid3DR<double>& grid) const = 0;

  /// Into a storage of 2·nbPositions() elements; here its host side, which must hold floats.
  virtual void compute(CudaStorage* data, const Grid3DR<double>& grid) const;

 protected:
  Transducer() = default;
  Transducer(const Transducer&) = default;
  Transducer& operator=(const Transducer&) = default;
};

/// A source whose whole face moves as one.
class Piston : public Transducer {};

}  // namespace pistonfield
