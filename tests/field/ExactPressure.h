#pragma once

#include <complex>
#include <vector>

#include "field/field.h"

/// d·∫ (exp(−ikR) − exp(−ikz))/(d² + σ²) dσ from `from` to `to`, R = √(z² + d² + σ²), in extended
/// precision.
std::complex<long double> exactIntegral(long double d, long double z, long double from,
                                        long double to, long double k);

/// The pressure of a piston at a point, in extended precision: the integrals along the edges with
/// σ = ρ·sinh u, which moves the branch point of R away from the interval, by a composite rule. The
/// error is some 1e-18·(1 + kR) of the edges' terms, which cancel where the piston is small or far
/// off.
std::complex<long double> exactPressure(const pistonfield::Field::Piston& piston, long double k,
                                        const pistonfield::Position& point);

/// The same for a sum of pistons.
std::complex<long double> exactPressure(const std::vector<pistonfield::Field::Piston>& pistons,
                                        long double k, const pistonfield::Position& point);
