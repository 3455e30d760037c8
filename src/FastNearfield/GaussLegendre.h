#pragma once

namespace pistonfield {

/// Computes the Gauss–Legendre rule of `order` nodes on [−1, 1]:
///
///     ∫ f(x) dx ≈ Σ w[i]·f(x[i]),   i = 0 … order−1.
///
/// `x` and `w` are arrays of `order` elements of the caller's. The abscissas ascend and are
/// antisymmetric, the weights symmetric, both bit for bit; the middle abscissa of an odd order is
/// exactly 0. Up to order 512 the error of an abscissa is below 2^-53, that of a weight below
/// 2^-50, and below order·2^-46 of the weight itself: those next to the ends of the interval are
/// small and have fewest digits. The cost is O(order²).
///
/// An order below 1 prints a message on standard output and ends the process with status 1.
void legendre_compute(int order, double* x, double* w);

/// The same rule rounded to T (`float`), never computed in it.
template <class T>
void legendre_compute(int order, T* x, T* w);

}  // namespace pistonfield
