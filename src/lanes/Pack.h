#pragma once

#include "lanes/Arithmetic.h"

// A pack holds one quantity of several points in a register, one point per lane. It supports the
// arithmetic of lanes/Arithmetic.h.
//
// `Set` is an instruction set: a struct with the type of a value, a register type, a mask type and
// operations on them. Each set has its own header in this folder, in which `Double` is the set for
// double precision: its registers have half as many lanes, and
//
//     lower, upper   the first and the second half of a register's floats, as doubles
//     joined         both halves as floats, rounded
//
// If `dividesSlowly()`, it also has `inverse`, 1/x within 2^-22 for 2^-126 ≤ |x| ≤ 2^126.
//
// Besides arithmetic, load and store, a set for floats has
//
//     loadTriples    the first, second and third values of `width` consecutive triples
//     gatherTriples  the same of the triples at given indices; it may read one value after each
//     storePairs     a first and a second value of each lane, lane after lane
//     storeIndices   first + n for each lane n whose bit is set, in order; it may write a whole
//                    register
//
// A file that includes this is compiled for one instruction set. All it defines is tied to that set
// by a template parameter, so that no other file can end up with its instructions.

namespace pistonfield {

/// Where a number has its exponent, and what, added to an integer n, gives a number whose last bits
/// are those of n plus the bias.
template <class Value>
struct ExponentOf;
template <>
struct ExponentOf<float> {
  static constexpr int position = 23;
  static constexpr float sumWithBits = 0x1.8p23f + 127;
};
template <>
struct ExponentOf<double> {
  static constexpr int position = 52;
  static constexpr double sumWithBits = 0x1.8p52 + 1023;
};

template <class Set>
struct PackMask {
  typename Set::Mask mask;

  /// One bit per lane, the lowest for the first lane.
  PISTONFIELD_HOST_DEVICE unsigned bits() const { return Set::bits(mask); }
};

template <class Set>
struct Pack {
  using Register = typename Set::Register;
  using Value = typename Set::Value;
  static constexpr int lanes = Set::width;

  Pack() = default;
  PISTONFIELD_HOST_DEVICE explicit Pack(Value everywhere) : value(Set::broadcast(everywhere)) {}
  PISTONFIELD_HOST_DEVICE static Pack of(Register value) {
    Pack pack;
    pack.value = value;
    return pack;
  }

  PISTONFIELD_HOST_DEVICE static Pack load(const Value* from) { return of(Set::load(from)); }
  PISTONFIELD_HOST_DEVICE void store(Value* to) const { Set::store(to, value); }

  Register value;
};

template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> operator+(Pack<Set> x, Pack<Set> y) {
  return Pack<Set>::of(x.value + y.value);
}
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> operator-(Pack<Set> x, Pack<Set> y) {
  return Pack<Set>::of(x.value - y.value);
}
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> operator*(Pack<Set> x, Pack<Set> y) {
  return Pack<Set>::of(x.value * y.value);
}
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> operator-(Pack<Set> x) {
  return Pack<Set>::of(-x.value);
}

template <class Set>
PISTONFIELD_HOST_DEVICE PackMask<Set> operator<(Pack<Set> x, Pack<Set> y) {
  return {Set::less(x.value, y.value)};
}
template <class Set>
PISTONFIELD_HOST_DEVICE PackMask<Set> operator>(Pack<Set> x, Pack<Set> y) {
  return y < x;
}
template <class Set>
PISTONFIELD_HOST_DEVICE PackMask<Set> operator<=(Pack<Set> x, Pack<Set> y) {
  return {Set::lessOrEqual(x.value, y.value)};
}
template <class Set>
PISTONFIELD_HOST_DEVICE PackMask<Set> operator==(Pack<Set> x, Pack<Set> y) {
  return {Set::equal(x.value, y.value)};
}
template <class Set>
PISTONFIELD_HOST_DEVICE PackMask<Set> operator&(PackMask<Set> p, PackMask<Set> q) {
  return {Set::logicalAnd(p.mask, q.mask)};
}
template <class Set>
PISTONFIELD_HOST_DEVICE PackMask<Set> operator|(PackMask<Set> p, PackMask<Set> q) {
  return {Set::logicalOr(p.mask, q.mask)};
}

template <class Set>
PISTONFIELD_HOST_DEVICE bool any(PackMask<Set> mask) {
  return mask.bits() != 0;
}
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> select(PackMask<Set> mask, Pack<Set> yes, Pack<Set> no) {
  return Pack<Set>::of(Set::select(mask.mask, yes.value, no.value));
}
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> absolute(Pack<Set> x) {
  return Pack<Set>::of(Set::absolute(x.value));
}
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> squareRoot(Pack<Set> x) {
  return Pack<Set>::of(Set::squareRoot(x.value));
}
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> quotient(Pack<Set> x, Pack<Set> y) {
  return Pack<Set>::of(x.value / y.value);
}
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> secondQuotient(Pack<Set> x, Pack<Set> y) {
  return Pack<Set>::of(Set::secondQuotient(x.value, y.value));
}
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> multiplyAdd(Pack<Set> x, Pack<Set> y, Pack<Set> z) {
  return Pack<Set>::of(Set::multiplyAdd(x.value, y.value, z.value));
}

template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> inverse(Pack<Set> x) {
  return Pack<Set>::of(Set::inverse(x.value));
}
/// 1/x and √x within 2^-11, for 2^-126 ≤ x ≤ 2^126.
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> inverseEstimate(Pack<Set> x) {
  return Pack<Set>::of(Set::inverseEstimate(x.value));
}
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> rootEstimate(Pack<Set> x) {
  return Pack<Set>::of(Set::rootEstimate(x.value));
}

/// The largest lane.
template <class Set>
PISTONFIELD_HOST_DEVICE float largest(Pack<Set> x) {
  return Set::largest(x.value);
}

template <class Set>
PISTONFIELD_HOST_DEVICE float smallest(Pack<Set> x) {
  return -largest(-x);
}

/// 2^n for an integer n that is the exponent of a normal number.
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> powerOfTwo(Pack<Set> n) {
  using Exponent = ExponentOf<typename Set::Value>;
  // The last bits of the sum are those of n, with the bias of exponents.
  const typename Set::Register sum = (n + Pack<Set>(Exponent::sumWithBits)).value;
  return Pack<Set>::of(reinterpret_cast<typename Set::Register>(
      reinterpret_cast<typename Set::Integers>(sum) << Exponent::position));
}

/// The floats' bits as integers, which are converted to floats; and back.
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> bitsAsNumber(Pack<Set> x) {
  return Pack<Set>::of(__builtin_convertvector(reinterpret_cast<typename Set::Integers>(x.value),
                                               typename Set::Register));
}
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> numberAsBits(Pack<Set> x) {
  return Pack<Set>::of(reinterpret_cast<typename Set::Register>(
      __builtin_convertvector(x.value, typename Set::Integers)));
}

template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> larger(Pack<Set> x, Pack<Set> y) {
  return select(x < y, y, x);
}
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> smaller(Pack<Set> x, Pack<Set> y) {
  return select(y < x, y, x);
}

}  // namespace pistonfield
