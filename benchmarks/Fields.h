#pragma once

#include <cstdint>
#include <vector>

// What all benchmarks compute: a piston of 5λ × 7.5λ at 1 MHz in water, in SI units.

namespace fields {

constexpr float wavelength = 1.5e-3f;
constexpr float s = 5 * wavelength, l = 7.5f * wavelength;  // along x and y
constexpr float k = 4188.79f;

/// x, y, z of random points in a box twice as wide and twice as high as the piston, from λ/4 to 15λ
/// in front of it.
std::vector<float> cloud(int points);

/// The same box as a regular grid, the first axis varying fastest; at most `points`.
std::vector<float> grid(int points);

/// The number of times that a rule of this order evaluates the integrand for these points.
std::int64_t nodes(const std::vector<float>& positions, int order);

/// The number of CPU cores that this process may use.
int cores();

/// Restricts this process to `count` cores, starting with core `first`; 0 allows all.
void useCores(int count, int first = 0);

}  // namespace fields
