#pragma once

#include <cstddef>
#include <vector>

// Grids for kernels: sizes of 1, primes, and sizes that are not multiples of 8, 16 or 128.

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
inline float transform[16] = {0.125f, 0.25f, -0.5f,  0.0625f, -0.25f, 0.125f, 0.5f, 0.5f,
                              0.5f,   0.25f, 0.125f, 1,       9,      9,      9,    9};

/// x, y, z of every point, the first axis varying fastest.
inline std::vector<float> transformedPositions(const Size& size, const float* t = transform) {
  std::vector<float> positions;
  for (int l = 0; l < size.sz; ++l)
    for (int j = 0; j < size.sy; ++j)
      for (int i = 0; i < size.sx; ++i)
        for (const float* row = t; row != t + 12; row += 4)
          positions.push_back(row[0] * static_cast<float>(i) + row[1] * static_cast<float>(j) +
                              row[2] * static_cast<float>(l) + row[3]);
  return positions;
}

}  // namespace test_grids
