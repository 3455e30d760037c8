#pragma once

#include "../core/CudaStorage.h"
#include "../core/Grid3DR.h"

namespace pistonfield {

/// A sound source whose complex pressure is computed on a regular grid. Results are in the grid's
/// point order, real and imaginary part of each point in turn.
class Transducer {
 public:
  virtual ~Transducer() = default;

  /// Writes 2·nbPositions() floats to `out`.
  virtual void compute(float* out, const Grid3DR<double>& grid) const = 0;

  /// Writes to a storage of 2·nbPositions() elements. This implementation writes to its host side,
  /// which must hold floats.
  virtual void compute(CudaStorage* data, const Grid3DR<double>& grid) const;

 protected:
  Transducer() = default;
  Transducer(const Transducer&) = default;
  Transducer& operator=(const Transducer&) = default;
};

/// A sound source whose face moves as a rigid body.
class Piston : public Transducer {};

}  // namespace pistonfield
