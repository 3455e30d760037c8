#pragma once

#include <cstring>

#include "lanes/Pack.h"

// The instruction set of a GPU's thread: a pack is one point. The functions are those of
// lanes/Arithmetic.h, so the CPU, which compiles this for the emulation device and for tests,
// rounds roots and quotients correctly.

namespace pistonfield {

/// What the sets of both precisions have in common.
template <class T>
struct OneLaneOf {
  using Value = T;
  using Register = T;
  using Mask = bool;
  static constexpr int width = 1;

  PISTONFIELD_INLINE static T broadcast(T x) { return x; }
  PISTONFIELD_INLINE static T load(const T* from) { return *from; }
  PISTONFIELD_INLINE static void store(T* to, T x) { *to = x; }

  PISTONFIELD_INLINE static bool less(T x, T y) { return x < y; }
  PISTONFIELD_INLINE static bool equal(T x, T y) { return x == y; }
  PISTONFIELD_INLINE static unsigned bits(bool mask) { return mask ? 1 : 0; }
  PISTONFIELD_INLINE static bool logicalAnd(bool x, bool y) { return x && y; }
  PISTONFIELD_INLINE static T select(bool mask, T yes, T no) { return mask ? yes : no; }

  PISTONFIELD_INLINE static T absolute(T x) { return std::fabs(x); }
  PISTONFIELD_INLINE static T multiplyAdd(T x, T y, T z) {
    return pistonfield::multiplyAdd(x, y, z);
  }
};

struct OneLaneDouble : OneLaneOf<double> {
  PISTONFIELD_INLINE static double squareRoot(double x) { return std::sqrt(x); }
};

struct OneLane : OneLaneOf<float> {
  using Double = OneLaneDouble;
  PISTONFIELD_INLINE static constexpr bool dividesSlowly() { return false; }

  PISTONFIELD_INLINE static double lower(float x) { return x; }
  PISTONFIELD_INLINE static float rounded(double x) { return static_cast<float>(x); }

  PISTONFIELD_INLINE static bool lessOrEqual(float x, float y) { return x <= y; }

  PISTONFIELD_INLINE static float inverseEstimate(float x) { return quotient(1.0f, x); }
  PISTONFIELD_INLINE static float rootEstimate(float x) { return pistonfield::squareRoot(x); }
  PISTONFIELD_INLINE static float largest(float x) { return x; }

  PISTONFIELD_INLINE static float squareRoot(float x) { return pistonfield::squareRoot(x); }
};

PISTONFIELD_INLINE Pack<OneLane> quotient(Pack<OneLane> x, Pack<OneLane> y) {
  return Pack<OneLane>::of(quotient(x.value, y.value));
}

PISTONFIELD_INLINE Pack<OneLane> powerOfTwo(Pack<OneLane> n) {
  const int bits = (static_cast<int>(n.value) + 127) << 23;
  Pack<OneLane> result;
  std::memcpy(&result.value, &bits, sizeof bits);
  return result;
}
PISTONFIELD_INLINE Pack<OneLaneDouble> powerOfTwo(Pack<OneLaneDouble> n) {
  const long long bits = (static_cast<long long>(static_cast<int>(n.value)) + 1023) << 52;
  Pack<OneLaneDouble> result;
  std::memcpy(&result.value, &bits, sizeof bits);
  return result;
}

PISTONFIELD_INLINE Pack<OneLane> bitsAsNumber(Pack<OneLane> x) {
  int bits = 0;
  std::memcpy(&bits, &x.value, sizeof bits);
  return Pack<OneLane>::of(static_cast<float>(bits));
}

PISTONFIELD_INLINE Pack<OneLane> numberAsBits(Pack<OneLane> x) {
  const int bits = static_cast<int>(x.value);
  Pack<OneLane> result;
  std::memcpy(&result.value, &bits, sizeof bits);
  return result;
}

}  // namespace pistonfield
