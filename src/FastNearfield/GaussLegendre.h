#pragma once

namespace pistonfield {

/// Computes the Gauss–Legendre rule of `order` nodes on [−1, 1]:
///
///     ∫ f(x) dx ≈ Σ w[i]·f(x[i]),   i = 0 … order−1.
///
/// Writes `order` elements each to `x` and `w`. The abscissas ascend and are antisymmetric, the
/// weights are symmetric, both bit for bit; the middle abscissa of an odd order is exactly 0. Up to
/// order 512 the error of an abscissa is below 2^-53. The error of a weight is below 2^-50, and
/// below order·2^-46 relative to the weight: the small weights next to the ends of the interval
/// have the fewest digits. The cost is O(order²).
///
/// An order below 1 prints a message to standard output and ends the process with status 1.
void legendre_compute(int order, double* x, double* w);

/// Computes the rule in double precision and rounds it to T (`float`).
template <class T>
void legendre_compute(int order, T* x, T* w);

}  // namespace pistonfield
