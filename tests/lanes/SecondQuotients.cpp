#include "lanes/SecondQuotients.h"

#include "lanes/Avx512.h"

void lanes::secondQuotients(const float* x, const float* y, float* q, int count) {
  using Set = pistonfield::Avx512SlowDivision;
  for (int n = 0; n < count; n += Set::width)
    Set::store(q + n, Set::secondQuotient(Set::load(x + n), Set::load(y + n)));
}
