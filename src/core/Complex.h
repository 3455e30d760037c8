#pragma once

namespace pistonfield {

/// A complex number as two consecutive values, real part first.
template <class T>
struct ComplexPair {
  T re, im;
};

using Complex = ComplexPair<float>;
using Complexd = ComplexPair<double>;

}  // namespace pistonfield
