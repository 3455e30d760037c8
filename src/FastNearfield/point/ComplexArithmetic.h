#pragma once

#include "core/Complex.h"
#include "lanes/Arithmetic.h"

namespace pistonfield {

template <class V>
PISTONFIELD_INLINE ComplexPair<V> operator+(ComplexPair<V> p, ComplexPair<V> q) {
  return {p.re + q.re, p.im + q.im};
}

/// c·p + q
template <class V>
PISTONFIELD_INLINE ComplexPair<V> multiplyAdd(V c, ComplexPair<V> p, ComplexPair<V> q) {
  return {multiplyAdd(c, p.re, q.re), multiplyAdd(c, p.im, q.im)};
}

template <class Mask, class V>
PISTONFIELD_INLINE ComplexPair<V> select(Mask mask, ComplexPair<V> yes, ComplexPair<V> no) {
  return {select(mask, yes.re, no.re), select(mask, yes.im, no.im)};
}

/// scale·value, not multiplied yet, so that a sum with it can be a multiply-add.
template <class V>
struct ScaledPair {
  V scale;
  ComplexPair<V> value;
};

template <class V>
PISTONFIELD_INLINE ComplexPair<V> product(ScaledPair<V> p) {
  return {p.scale * p.value.re, p.scale * p.value.im};
}

template <class V>
PISTONFIELD_INLINE ComplexPair<V> operator+(ScaledPair<V> p, ScaledPair<V> q) {
  return multiplyAdd(q.scale, q.value, product(p));
}

}  // namespace pistonfield
