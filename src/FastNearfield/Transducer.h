#pragma once

namespace pistonfield {

/// A source of sound.
class Transducer {
 public:
  virtual ~Transducer() = default;

 protected:
  Transducer() = default;
  Transducer(const Transducer&) = default;
  Transducer& operator=(const Transducer&) = default;
};

/// A source whose whole face moves as one.
class Piston : public Transducer {};

}  // namespace pistonfield
