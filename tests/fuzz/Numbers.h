#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

// Numbers of every kind out of a fuzzer's bytes.

namespace fuzz {

/// Any number, including NaN, infinite, denormal and huge ones, and often one at a limit.
template <class Real>
Real anyNumber(FuzzedDataProvider& bytes) {
  using Limits = std::numeric_limits<Real>;
  static const Real edges[] = {0,
                               Real(-0.0),
                               1,
                               -1,
                               Real(0.5),
                               Limits::quiet_NaN(),
                               Limits::infinity(),
                               -Limits::infinity(),
                               Limits::denorm_min(),
                               Limits::min(),
                               Limits::max(),
                               Limits::lowest(),
                               Real(1e-7),
                               Real(1e30),
                               Real(2147483648.0),
                               Real(-2147483649.0)};
  switch (bytes.ConsumeIntegralInRange(0, 2)) {
    case 0:
      return bytes.PickValueInArray(edges);
    case 1:
      return static_cast<Real>(bytes.ConsumeIntegral<std::int16_t>()) / 16;
    default:
      const auto bits = bytes.ConsumeIntegral<
          std::conditional_t<sizeof(Real) == 4, std::uint32_t, std::uint64_t>>();
      Real value;
      std::memcpy(&value, &bits, sizeof value);
      return value;
  }
}

/// A length or a coordinate near a piston of size 1, and occasionally any number.
template <class Real>
Real usualNumber(FuzzedDataProvider& bytes) {
  const auto value = bytes.ConsumeIntegral<std::int8_t>();
  return value == -128 ? anyNumber<Real>(bytes) : static_cast<Real>(value) / 32;
}

/// `count` numbers, either all usual or of every kind.
template <class Real>
std::vector<Real> numbers(FuzzedDataProvider& bytes, std::size_t count) {
  const bool usual = bytes.ConsumeBool();
  std::vector<Real> values(count);
  for (Real& value : values) value = usual ? usualNumber<Real>(bytes) : anyNumber<Real>(bytes);
  return values;
}

}  // namespace fuzz
