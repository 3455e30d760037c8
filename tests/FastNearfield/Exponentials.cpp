#include "FastNearfield/Exponentials.h"

#include PISTONFIELD_HEADER_OF_SET
#include "FastNearfield/intervals/Exponential.h"

// Compiled once for each set: PISTONFIELD_SET, with the table PISTONFIELD_TABLE.

namespace {

using pistonfield::Exponential;
using pistonfield::Pack;
using Floats = pistonfield::PISTONFIELD_SET;

template <class Set>
void evaluate(const typename Set::Value* x, typename Set::Value* exponentials,
              typename Set::Value* minusOne, int count) {
  for (int n = 0; n < count; n += Pack<Set>::lanes) {
    const Exponential<Set> e(Pack<Set>::load(x + n));
    e.value().store(exponentials + n);
    e.minusOne().store(minusOne + n);
  }
}

}  // namespace

const Exponentials PISTONFIELD_TABLE = {evaluate<Floats>, evaluate<Floats::Double>};
