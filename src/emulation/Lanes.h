#pragma once

// Packs of lanes: the same quantity of many points, one a lane, in a register of an instruction
// set. They offer the vocabulary in which kernels are written (core/LaneFunctions.h).
//
// `Set` is one of the instruction sets below lanes/, each a struct of a register type, a mask type
// and the operations on them. Beside those on every lane, and load and store:
//
//     loadTriples    the first, second and third values of as many triples as there are lanes
//     gatherTriples  the same, of the triples that stand at given places; the number after each may
//                    be read too
//     storePairs     a first and a second value of each lane, lane after lane
//     storePlaces    first + the number of each lane whose bit is set, one after the other; up to a
//                    whole register is written
//
// `chainsPay` tells whether it saves time to start the next pack while one is evaluated, which
// takes registers.
//
// A file that includes this is compiled for one instruction set. All that it defines is tied to
// that set by a template parameter, so that no other file can end up with its instructions.

namespace emulation {

template <class Set>
struct LaneMask {
  typename Set::Mask mask;

  /// One bit a lane, the first lane's lowest.
  unsigned bits() const { return Set::bits(mask); }
};

template <class Set>
struct Lanes {
  using Register = typename Set::Register;
  static constexpr int count = Set::width;

  Lanes() = default;
  explicit Lanes(float everywhere) : value(Set::broadcast(everywhere)) {}
  static Lanes of(Register value) {
    Lanes lanes;
    lanes.value = value;
    return lanes;
  }

  static Lanes load(const float* from) { return of(Set::load(from)); }
  void store(float* to) const { Set::store(to, value); }

  Register value;
};

template <class Set>
Lanes<Set> operator+(Lanes<Set> x, Lanes<Set> y) {
  return Lanes<Set>::of(x.value + y.value);
}
template <class Set>
Lanes<Set> operator-(Lanes<Set> x, Lanes<Set> y) {
  return Lanes<Set>::of(x.value - y.value);
}
template <class Set>
Lanes<Set> operator*(Lanes<Set> x, Lanes<Set> y) {
  return Lanes<Set>::of(x.value * y.value);
}
template <class Set>
Lanes<Set> operator-(Lanes<Set> x) {
  return Lanes<Set>::of(-x.value);
}

template <class Set>
LaneMask<Set> operator<(Lanes<Set> x, Lanes<Set> y) {
  return {Set::less(x.value, y.value)};
}
template <class Set>
LaneMask<Set> operator>(Lanes<Set> x, Lanes<Set> y) {
  return y < x;
}
template <class Set>
LaneMask<Set> operator<=(Lanes<Set> x, Lanes<Set> y) {
  return {Set::notAbove(x.value, y.value)};
}
template <class Set>
LaneMask<Set> operator==(Lanes<Set> x, Lanes<Set> y) {
  return {Set::equal(x.value, y.value)};
}
template <class Set>
LaneMask<Set> operator&(LaneMask<Set> p, LaneMask<Set> q) {
  return {Set::both(p.mask, q.mask)};
}
template <class Set>
LaneMask<Set> operator|(LaneMask<Set> p, LaneMask<Set> q) {
  return {Set::either(p.mask, q.mask)};
}

template <class Set>
bool any(LaneMask<Set> mask) {
  return mask.bits() != 0;
}
template <class Set>
Lanes<Set> select(LaneMask<Set> mask, Lanes<Set> yes, Lanes<Set> no) {
  return Lanes<Set>::of(Set::select(mask.mask, yes.value, no.value));
}
template <class Set>
Lanes<Set> absolute(Lanes<Set> x) {
  return Lanes<Set>::of(Set::absolute(x.value));
}
template <class Set>
Lanes<Set> squareRoot(Lanes<Set> x) {
  return Lanes<Set>::of(Set::squareRoot(x.value));
}
template <class Set>
Lanes<Set> quotient(Lanes<Set> x, Lanes<Set> y) {
  return Lanes<Set>::of(x.value / y.value);
}
template <class Set>
Lanes<Set> secondQuotient(Lanes<Set> x, Lanes<Set> y) {
  return Lanes<Set>::of(Set::secondQuotient(x.value, y.value));
}
template <class Set>
Lanes<Set> multiplyAdd(Lanes<Set> x, Lanes<Set> y, Lanes<Set> z) {
  return Lanes<Set>::of(Set::multiplyAdd(x.value, y.value, z.value));
}

}  // namespace emulation
