#pragma once

namespace support {

struct Node {
  long double x, w;
};

/// The node of the Gauss–Legendre rule of n nodes that is nearest to x, and its weight: a zero of
/// the Legendre polynomial, by Newton's method.
inline Node legendreNode(int n, long double x) {
  long double slope = 0;
  for (int step = 0;; ++step) {
    long double before = 1, p = x;
    for (int k = 2; k <= n; ++k) {
      const long double next = 2 * x * p - before - (x * p - before) / k;
      before = p;
      p = next;
    }
    slope = n * (before - x * p) / (1 - x * x);
    if (step == 4) return {x, 2 / ((1 - x * x) * slope * slope)};
    x -= p / slope;
  }
}

}  // namespace support
