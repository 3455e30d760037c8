#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <vector>

// The pressure of rectangular pistons, for a tolerance:
//
//     #include <pistonfield/field.h>
//
//     const double lambda = 1.5e-3;                                      // m
//     pistonfield::Field field({{5 * lambda, 7.5 * lambda}}, 2 * pi / lambda);
//     const std::vector<std::complex<double>> p = field.at({{0, 0, 20 * lambda}});
//
// All lengths, and 1/k, are in one unit. The pressure is without the factor ρcv: 1 is the pressure
// of a plane wave with the velocity of the piston (the page "theory" of the documentation). The
// time factor is exp(+iωt).
//
// In a lossy medium the wave number is k − iα with the attenuation α: waves decay as exp(−αR). The
// field is
//
//     p = Σ w·K/2π ∬ exp(−iKR)/R dS,   K = k − iα
//
// over the face of each piston with the weight w, in front of it. Behind it the wave of the piston
// grows, by 60 nepers at most.
//
// Any number of threads may use one Field, or several, at once. Nothing is printed, and nothing
// outside of the arguments is read or written. In a build for CUDA, large sums are computed on the
// thread's current device, one thread at a time, and the device stays started.

namespace pistonfield {

using Position = std::array<double, 3>;  ///< x, y, z

/// All points (x[i], y[j], z[m]). Point i + x.size()·(j + y.size()·m) is (x[i], y[j], z[m]).
struct AxesGrid {
  std::vector<double> x, y, z;
};

/// All points origin + i·steps[0] + j·steps[1] + m·steps[2], 0 ≤ i < counts[0] and so on, in the
/// same order.
struct AffineGrid {
  Position origin = {0, 0, 0};
  std::array<Position, 3> steps = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  std::array<std::size_t, 3> counts = {1, 1, 1};
};

/// what() states what to do.
class FieldError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct FieldOptions {
  /// The largest error of a pressure, relative to the largest magnitude among the points of the
  /// call: from 1e-12 to below 1.
  double tolerance = 1e-4;

  /// If above 0, the order of every integral, up to 512: along an edge, or along each of its parts
  /// if the foot of the perpendicular lies on it, as in `pistonfield`. Unlike there, the part of
  /// the pressure that is discontinuous behind the piston's edges is exact. Integrals are evaluated
  /// in single precision, or in double precision from a million wavelengths on. The tolerance is
  /// ignored.
  int order = 0;

  /// Called by the calling thread between pieces of work, with the fraction that is done, which
  /// never falls. An exception that it throws ends the call and passes through it.
  std::function<void(double fraction)> progress;
};

/// What a call used.
struct FieldReport {
  int leastOrder = 0, mostOrder = 0;  ///< of the integrals' quadrature rules; 0 if none was needed
  bool single = false;                ///< whether integrals were evaluated in single precision
  bool precise = false;               ///< whether integrals were evaluated in double precision
  double nodes = 0;                   ///< how many values of integrands
  double bound = 0;  ///< an upper bound of a pressure's absolute error; NaN for a given order
};

/// The field of one or more pistons.
class Field {
 public:
  /// A rectangular piston, which moves with one velocity normal to its plane.
  struct Piston {
    double width = 0;   ///< its side along its own x; at least 0
    double height = 0;  ///< its side along its own y; at least 0
    Position centre = {0, 0, 0};
    /// The directions of its own x, y and z in the coordinates of the field: unit vectors, at right
    /// angles, right-handed, within 1e-6; z is computed from x and y. It radiates towards its own
    /// z.
    std::array<Position, 3> axes = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    std::complex<double> weight = 1;  ///< its velocity; 1 is that of the scale above
  };

  /// Throws a FieldError if a piston or k is invalid. All numbers must be finite. The real part of
  /// k must be 0, or from 1e-99 to 1e99 in magnitude; 0 gives the pressure 0, and −k instead of k
  /// the pressure −conj(p) for weights 1. Without loss the imaginary part is 0, otherwise −α for
  /// the attenuation α in nepers per unit of length, of at most the magnitude of the real part
  /// (medium.h computes it). Sides must be 0 or from 1e-9 to 1e6 wavelengths, 2π/|real part of k|,
  /// and centres within 1e9 wavelengths of the origin.
  Field(std::vector<Piston> pistons, std::complex<double> k);

  /// Returns the pressures at the points, in their order. A point that is not finite gets NaN.
  /// Throws a FieldError if the options are invalid, if a point is farther than 1e9 wavelengths
  /// from the origin, if the tolerance cannot be kept, or if there is too little memory.
  std::vector<std::complex<double>> at(const std::vector<Position>& points,
                                       const FieldOptions& options = {},
                                       FieldReport* report = nullptr) const;

  /// The same for `count` points in an array, of which no copy is made.
  std::vector<std::complex<double>> at(const Position* points, std::size_t count,
                                       const FieldOptions& options = {},
                                       FieldReport* report = nullptr) const;

  /// The same for a grid.
  std::vector<std::complex<double>> on(const AxesGrid& grid, const FieldOptions& options = {},
                                       FieldReport* report = nullptr) const;
  std::vector<std::complex<double>> on(const AffineGrid& grid, const FieldOptions& options = {},
                                       FieldReport* report = nullptr) const;

 private:
  std::vector<Piston> pistons_;
  std::complex<double> k_;
};

}  // namespace pistonfield
