#pragma once

#if defined(__x86_64__)
#include "lanes/Sse2.h"
#else
#include "lanes/Neon.h"
#endif
#include "lanes/Pack.h"

// Packs of the instruction set that every machine of its kind has.

#if defined(__x86_64__)
using Set = pistonfield::Sse2;
#else
using Set = pistonfield::Neon;
#endif

/// The first lane.
template <class V>
double first(V pack) {
  typename V::Value values[V::lanes];
  pack.store(values);
  return static_cast<double>(values[0]);
}
