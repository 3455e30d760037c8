#pragma once

// Packs of lanes: the same quantity of many points, one a lane, in the registers of an instruction
// set. They offer the vocabulary in which kernels are written (core/LaneFunctions.h).
//
// `Set` is one of the instruction sets below lanes/, each a struct of a register type, a mask type
// and the operations on them. A pack is two registers wide: each operation then has a second one to
// do while the first is on its way, which a processor keeps busy with code that reads as if there
// were one lane.
//
// A file that includes this is compiled for one instruction set. All that it defines is tied to
// that set by a template parameter, so that no other file can end up with its instructions.

namespace emulation {

template <class Set>
struct LaneMask {
  typename Set::Mask low, high;

  /// One bit a lane, the first lane's lowest.
  unsigned bits() const { return Set::bits(low) | Set::bits(high) << Set::width; }
};

template <class Set>
class Lanes {
 public:
  using Register = typename Set::Register;
  static constexpr int count = 2 * Set::width;

  Lanes() = default;
  explicit Lanes(float everywhere) : low(Set::broadcast(everywhere)), high(low) {}
  Lanes(Register low_, Register high_) : low(low_), high(high_) {}

  static Lanes load(const float* from) { return {Set::load(from), Set::load(from + Set::width)}; }
  void store(float* to) const {
    Set::store(to, low);
    Set::store(to + Set::width, high);
  }

  Register low, high;
};

template <class Set>
Lanes<Set> operator+(Lanes<Set> x, Lanes<Set> y) {
  return {x.low + y.low, x.high + y.high};
}
template <class Set>
Lanes<Set> operator-(Lanes<Set> x, Lanes<Set> y) {
  return {x.low - y.low, x.high - y.high};
}
template <class Set>
Lanes<Set> operator*(Lanes<Set> x, Lanes<Set> y) {
  return {x.low * y.low, x.high * y.high};
}
template <class Set>
Lanes<Set> operator/(Lanes<Set> x, Lanes<Set> y) {
  return {x.low / y.low, x.high / y.high};
}
template <class Set>
Lanes<Set> operator-(Lanes<Set> x) {
  return {-x.low, -x.high};
}

template <class Set>
LaneMask<Set> operator<(Lanes<Set> x, Lanes<Set> y) {
  return {Set::less(x.low, y.low), Set::less(x.high, y.high)};
}
template <class Set>
LaneMask<Set> operator>(Lanes<Set> x, Lanes<Set> y) {
  return y < x;
}
template <class Set>
LaneMask<Set> operator<=(Lanes<Set> x, Lanes<Set> y) {
  return {Set::notAbove(x.low, y.low), Set::notAbove(x.high, y.high)};
}
template <class Set>
LaneMask<Set> operator==(Lanes<Set> x, Lanes<Set> y) {
  return {Set::equal(x.low, y.low), Set::equal(x.high, y.high)};
}
template <class Set>
LaneMask<Set> operator&(LaneMask<Set> p, LaneMask<Set> q) {
  return {Set::both(p.low, q.low), Set::both(p.high, q.high)};
}
template <class Set>
LaneMask<Set> operator|(LaneMask<Set> p, LaneMask<Set> q) {
  return {Set::either(p.low, q.low), Set::either(p.high, q.high)};
}

template <class Set>
bool any(LaneMask<Set> mask) {
  return mask.bits() != 0;
}
template <class Set>
Lanes<Set> select(LaneMask<Set> mask, Lanes<Set> yes, Lanes<Set> no) {
  return {Set::select(mask.low, yes.low, no.low), Set::select(mask.high, yes.high, no.high)};
}
template <class Set>
Lanes<Set> absolute(Lanes<Set> x) {
  return {Set::absolute(x.low), Set::absolute(x.high)};
}
template <class Set>
Lanes<Set> squareRoot(Lanes<Set> x) {
  return {Set::squareRoot(x.low), Set::squareRoot(x.high)};
}
template <class Set>
Lanes<Set> quotient(Lanes<Set> x, Lanes<Set> y) {
  return x / y;
}
template <class Set>
Lanes<Set> nearestInteger(Lanes<Set> x) {
  return {Set::nearestInteger(x.low), Set::nearestInteger(x.high)};
}
template <class Set>
Lanes<Set> multiplyAdd(Lanes<Set> x, Lanes<Set> y, Lanes<Set> z) {
  return {Set::multiplyAdd(x.low, y.low, z.low), Set::multiplyAdd(x.high, y.high, z.high)};
}

}  // namespace emulation
