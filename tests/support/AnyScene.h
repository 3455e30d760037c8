#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

// Random pistons and points, in the whole range for which docs/accuracy.md states bounds.

namespace support {

/// A piston of half-width a along x and half-height b along y, and points around it.
template <class T>
struct SceneOf {
  T a, b, k;
  std::vector<std::array<T, 3>> points;
};

using Scene = SceneOf<float>;

class Chance {
 public:
  explicit Chance(std::mt19937& random) : random_(random) {}

  double between(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }
  /// A random number, with the same probability for every decade.
  double ofAnySize(double low, double high) {
    return std::exp(between(std::log(low), std::log(high)));
  }
  double sign() { return between(0, 1) < 0.5 ? -1 : 1; }

 private:
  std::mt19937& random_;
};

/// A random order from 1 to 512, more often a low one.
inline int anyOrder(std::mt19937& random) {
  Chance chance(random);
  const double order =
      chance.between(0, 1) < 0.3 ? chance.between(1, 513) : chance.ofAnySize(1, 513);
  return std::min(static_cast<int>(order), 512);
}

/// A coordinate along a side of length 2·half of a piston with this half diagonal.
template <class T>
T anyCoordinate(Chance& chance, T half, double size) {
  const auto edge = static_cast<T>(chance.sign()) * half;
  switch (static_cast<int>(chance.between(0, 8))) {
    case 0:
    case 1:
      return 0;
    case 2:
      return edge;
    case 3:
      return std::nextafter(edge, static_cast<T>(chance.sign() * 1e30));
    case 4:
      return static_cast<T>(static_cast<double>(edge) *
                            (1 + chance.sign() * chance.ofAnySize(1e-9, 1)));
    case 5:
      return static_cast<T>(chance.sign() * size * chance.ofAnySize(1e-8, 10));
    default:
      return static_cast<T>(chance.between(-3, 3) * size);
  }
}

/// Sides of 1e-12 … 1e12, one up to 10,000 times the other; k of both signs, kR up to 1e5; points
/// on the planes of symmetry, of the edges and of the piston, as close to them as floats allow, and
/// anywhere up to some 10,000 times the piston's size in front of it and behind it.
template <class T>
SceneOf<T> anyScene(std::mt19937& random, int count) {
  Chance chance(random);
  const double unit = chance.ofAnySize(1e-8, 1e12);
  SceneOf<T> scene;
  scene.a = static_cast<T>(unit * chance.ofAnySize(1e-4, 1) / 2);
  scene.b = static_cast<T>(unit * chance.ofAnySize(1e-4, 1) / 2);
  if (chance.between(0, 1) < 0.3) scene.b = scene.a;
  const auto size = static_cast<double>(std::hypot(scene.a, scene.b));
  const double heights[] = {0, 1e-9, 1e-4, 1e-2, 1, 1e2};
  for (int n = 0; n < count; ++n) {
    const double height = heights[static_cast<int>(chance.between(0, 6))];
    const double z = chance.sign() * height * size * chance.ofAnySize(1, 100);
    scene.points.push_back({anyCoordinate(chance, scene.a, size),
                            anyCoordinate(chance, scene.b, size), static_cast<T>(z)});
  }
  const auto& [x, y, z] = scene.points[0];
  const auto R = static_cast<double>(std::hypot(std::abs(x) + scene.a, std::abs(y) + scene.b, z));
  // Rounding errors are most visible where kR is of the order of 1.
  const double kR =
      chance.between(0, 1) < 0.5 ? chance.ofAnySize(0.3, 30) : chance.ofAnySize(1e-4, 1e5);
  scene.k = static_cast<T>(chance.sign() * kR / R);
  return scene;
}

}  // namespace support
