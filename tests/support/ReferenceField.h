#pragma once

#include <complex>
#include <string>
#include <vector>

namespace support {

struct Position {
  double x, y, z;
};

/// One piston and its pressure at a list of points, from an independent computation.
struct ReferenceField {
  double l, s, k;
  std::vector<Position> points;
  std::vector<std::complex<double>> pressure;

  /// The bound on the single-precision error at point i: 3·2^-24·(1 + kR).
  double tolerance(std::size_t i) const;

  /// The same for double precision: 3·2^-53·(1 + kR).
  double doubleTolerance(std::size_t i) const;
};

/// All fields of tests/data/<name>.
std::vector<ReferenceField> readReferenceFields(const std::string& name);

/// The path of a file in tests/. The environment variable PISTONFIELD_TESTS_DIR gives the path of
/// that folder; without it, it is the one that the tests were built from.
std::string testFile(const std::string& path);

/// The contents of a file.
std::string contents(const std::string& path);

}  // namespace support
