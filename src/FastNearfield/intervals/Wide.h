#pragma once

#include "core/Complex.h"
#include "lanes/Pack.h"

namespace pistonfield {

/// A pack in double precision, as `parts` packs of the set for doubles: its lower and its upper
/// half, or one.
template <class Set, int parts = Set::width / Set::Double::width>
struct Wide;

template <class Set>
struct Wide<Set, 2> {
  using Part = Pack<typename Set::Double>;

  Wide() = default;
  explicit Wide(double everywhere) : low(everywhere), high(low) {}
  Wide(Part lowPart, Part highPart) : low(lowPart), high(highPart) {}
  explicit Wide(Pack<Set> x)
      : low(Part::of(Set::lower(x.value))), high(Part::of(Set::upper(x.value))) {}

  static Wide load(const double* from) {
    return {Part::load(from), Part::load(from + Part::lanes)};
  }
  void store(double* to) const {
    low.store(to);
    high.store(to + Part::lanes);
  }

  Pack<Set> rounded() const { return Pack<Set>::of(Set::joined(low.value, high.value)); }

  /// f of each part of the arguments, a pack or a pair of packs.
  template <class F, class... Arguments>
  static Wide mapped(const F& f, const Arguments&... x) {
    return {f(x.low...), f(x.high...)};
  }
  template <class F, class... Arguments>
  static ComplexPair<Wide> mappedToPairs(const F& f, const Arguments&... x) {
    const ComplexPair<Part> ofLow = f(x.low...), ofHigh = f(x.high...);
    return {{ofLow.re, ofHigh.re}, {ofLow.im, ofHigh.im}};
  }
  template <class F>
  static bool anyOf(const F& f, const Wide& x, const Wide& y) {
    return any(f(x.low, y.low)) || any(f(x.high, y.high));
  }

  Part low, high;
};

template <class Set>
struct Wide<Set, 1> {
  using Part = Pack<typename Set::Double>;

  Wide() = default;
  PISTONFIELD_HOST_DEVICE explicit Wide(double everywhere) : part(everywhere) {}
  PISTONFIELD_HOST_DEVICE explicit Wide(Part only) : part(only) {}
  PISTONFIELD_HOST_DEVICE explicit Wide(Pack<Set> x) : part(Part::of(Set::lower(x.value))) {}

  PISTONFIELD_HOST_DEVICE static Wide load(const double* from) { return Wide(Part::load(from)); }
  PISTONFIELD_HOST_DEVICE void store(double* to) const { part.store(to); }

  PISTONFIELD_HOST_DEVICE Pack<Set> rounded() const {
    return Pack<Set>::of(Set::rounded(part.value));
  }

  template <class F, class... Arguments>
  PISTONFIELD_HOST_DEVICE static Wide mapped(const F& f, const Arguments&... x) {
    return Wide(f(x.part...));
  }
  template <class F, class... Arguments>
  PISTONFIELD_HOST_DEVICE static ComplexPair<Wide> mappedToPairs(const F& f,
                                                                 const Arguments&... x) {
    const ComplexPair<Part> pair = f(x.part...);
    return {Wide(pair.re), Wide(pair.im)};
  }
  template <class F>
  PISTONFIELD_HOST_DEVICE static bool anyOf(const F& f, const Wide& x, const Wide& y) {
    return any(f(x.part, y.part));
  }

  Part part;
};

template <class Set>
PISTONFIELD_HOST_DEVICE Wide<Set> operator+(Wide<Set> x, Wide<Set> y) {
  return Wide<Set>::mapped([](auto a, auto b) { return a + b; }, x, y);
}
template <class Set>
PISTONFIELD_HOST_DEVICE Wide<Set> operator-(Wide<Set> x, Wide<Set> y) {
  return Wide<Set>::mapped([](auto a, auto b) { return a - b; }, x, y);
}
template <class Set>
PISTONFIELD_HOST_DEVICE Wide<Set> operator*(Wide<Set> x, Wide<Set> y) {
  return Wide<Set>::mapped([](auto a, auto b) { return a * b; }, x, y);
}
template <class Set>
PISTONFIELD_HOST_DEVICE Wide<Set> absolute(Wide<Set> x) {
  return Wide<Set>::mapped([](auto a) { return absolute(a); }, x);
}
template <class Set>
PISTONFIELD_HOST_DEVICE Wide<Set> squareRoot(Wide<Set> x) {
  return Wide<Set>::mapped([](auto a) { return squareRoot(a); }, x);
}
template <class Set>
PISTONFIELD_HOST_DEVICE Wide<Set> larger(Wide<Set> x, Wide<Set> y) {
  return Wide<Set>::mapped([](auto a, auto b) { return larger(a, b); }, x, y);
}
template <class Set>
PISTONFIELD_HOST_DEVICE bool anyLess(Wide<Set> x, Wide<Set> y) {
  return Wide<Set>::anyOf([](auto a, auto b) { return a < b; }, x, y);
}
/// 1 where x < y, 1/2 where x = y, 0 elsewhere.
template <class Set>
PISTONFIELD_HOST_DEVICE Wide<Set> step(Wide<Set> x, Wide<Set> y) {
  return Wide<Set>::mapped(
      [](auto a, auto b) {
        using Part = decltype(a);
        return select(a < b, Part(1.0), select(a == b, Part(0.5), Part(0.0)));
      },
      x, y);
}

}  // namespace pistonfield
