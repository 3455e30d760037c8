#pragma once

#include <cstddef>
#include <vector>

// Grids for kernels: sizes of 1, primes, and no multiples of 8, 16 and 128.

namespace test_grids {

struct Size {
  int sx, sy, sz;
  std::size_t points() const {
    return static_cast<std::size_t>(sx) * static_cast<std::size_t>(sy) *
           static_cast<std::size_t>(sz);
  }
};

constexpr Size sizes[] = {{1, 1, 1}, {17, 3, 3}, {7, 11, 13}, {129, 1, 2}, {1, 1, 131}};

// Powers of two, so that the positions are exact on every device, whatever it fuses.
constexpr double transform[16] = {0.125, 0.25, -0.5,  0.0625, -0.25, 0.125, 0.5, 0.5,
                                  0.5,   0.25, 0.125, 1.0,    9,     9,     9,   9};

template <class T>
std::vector<T> transformAs() {
  std::vector<T> values;
  for (const double value : transform) values.push_back(static_cast<T>(value));
  return values;
}

/// x, y, z of every point, the first axis varying fastest.
template <class T>
std::vector<T> transformedPositions(const Size& size) {
  std::vector<T> positions;
  for (int l = 0; l < size.sz; ++l)
    for (int j = 0; j < size.sy; ++j)
      for (int i = 0; i < size.sx; ++i)
        for (const double* row = transform; row != transform + 12; row += 4)
          positions.push_back(static_cast<T>(row[0] * i + row[1] * j + row[2] * l + row[3]));
  return positions;
}

}  // namespace test_grids
