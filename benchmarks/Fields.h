#pragma once

#include <cstdint>
#include <vector>

// What all benchmarks compute: a piston of 5λ × 7.5λ at 1 MHz in water, in SI units.

namespace fields {

constexpr float wavelength = 1.5e-3f;
constexpr float s = 5 * wavelength, l = 7.5f * wavelength;  // along x and y
constexpr float k = 4188.79f;

/// x, y, z of points in a box twice the piston's size in each direction across, from λ/4 to 15λ
/// in front of it.
std::vector<float> cloud(int points);

/// The same box as a regular grid, the first axis varying fastest; at most `points`.
std::vector<float> grid(int points);

/// How many values of the integrand a rule of this order takes at these points.
std::int64_t nodes(const std::vector<float>& positions, int order);

/// How many CPU cores this process may use.
int cores();

/// Lets it use so many of them, from the one numbered `first` on; all for 0.
void useCores(int count, int first = 0);

}  // namespace fields
