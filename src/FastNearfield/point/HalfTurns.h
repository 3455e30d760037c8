#pragma once

#include "lanes/Arithmetic.h"

namespace pistonfield {

template <class V>
struct SineCosineOfHalfTurns {
  V sine, cosine;
};

/// sin(πr) and cos(πr) in single precision for |r| ≤ 1/2, within 0.5 and 0.02 units of 2^-24 before
/// rounding.
template <class V>
PISTONFIELD_INLINE SineCosineOfHalfTurns<V> sineCosineOfHalfTurns(V r) {
  const V t = r * r;
  V sine = multiplyAdd(t, V(0.07969464361667633f), V(-0.5993670225143433f));
  V cosine = multiplyAdd(t, V(-0.023963654413819313f), V(0.23468372225761414f));
  sine = multiplyAdd(t, sine, V(2.5502591133117676f));
  cosine = multiplyAdd(t, cosine, V(-1.335161566734314f));
  sine = multiplyAdd(t, sine, V(-5.167720317840576f));
  cosine = multiplyAdd(t, cosine, V(4.0587053298950195f));
  sine = multiplyAdd(t, sine, V(3.1415927410125732f));
  cosine = multiplyAdd(t, cosine, V(-4.934802055358887f));
  return {r * sine, multiplyAdd(t, cosine, V(1.0f))};
}

/// The same in double precision, within 4·10⁻¹⁸ before rounding.
template <class V>
PISTONFIELD_INLINE SineCosineOfHalfTurns<V> preciseSineCosineOfHalfTurns(V r) {
  const V t = r * r;
  V sine = multiplyAdd(t, V(7.697826768224191e-07), V(-2.1903497074626018e-05));
  V cosine = multiplyAdd(t, V(4.149564353942586e-06), V(-0.00010456655338748738));
  sine = multiplyAdd(t, sine, V(0.0004662998161898394));
  cosine = multiplyAdd(t, cosine, V(0.0019295562724817132));
  sine = multiplyAdd(t, sine, V(-0.007370430505916944));
  cosine = multiplyAdd(t, cosine, V(-0.025806888737002202));
  sine = multiplyAdd(t, sine, V(0.0821458865731029));
  cosine = multiplyAdd(t, cosine, V(0.23533063012953284));
  sine = multiplyAdd(t, sine, V(-0.5992645293189447));
  cosine = multiplyAdd(t, cosine, V(-1.335262768843447));
  sine = multiplyAdd(t, sine, V(2.5501640398773007));
  cosine = multiplyAdd(t, cosine, V(4.058712126416497));
  sine = multiplyAdd(t, sine, V(-5.167712780049969));
  cosine = multiplyAdd(t, cosine, V(-4.934802200544676));
  sine = multiplyAdd(t, sine, V(3.141592653589793));
  return {r * sine, multiplyAdd(t, cosine, V(1.0))};
}

}  // namespace pistonfield
