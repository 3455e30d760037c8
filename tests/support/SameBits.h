#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "core/Complex.h"

namespace support {

inline std::uint64_t bits(const pistonfield::Complex& p) {
  std::uint64_t bits = 0;
  static_assert(sizeof bits == sizeof p);
  std::memcpy(&bits, &p, sizeof p);
  return bits;
}

inline bool sameBits(const pistonfield::Complex& p, const pistonfield::Complex& q) {
  return bits(p) == bits(q);
}

inline bool sameBits(const std::vector<pistonfield::Complex>& p,
                     const std::vector<pistonfield::Complex>& q) {
  if (p.size() != q.size()) return false;
  for (std::size_t i = 0; i < p.size(); ++i)
    if (!sameBits(p[i], q[i])) return false;
  return true;
}

}  // namespace support
