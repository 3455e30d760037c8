#pragma once

namespace lanes {

/// q = x/y by multiplications, for each of `count` pairs, a multiple of 16. Needs AVX-512.
void secondQuotients(const float* x, const float* y, float* q, int count);

}  // namespace lanes
