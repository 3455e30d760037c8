#pragma once

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>

// What a kernel runs on whose PTX translate.py has made C++ of: registers, memory and arithmetic,
// with an error, thrown as its text, for what a GPU would do in silence.

using u8 = std::uint8_t;
using s8 = std::int8_t;
using u16 = std::uint16_t;
using s16 = std::int16_t;
using u32 = std::uint32_t;
using s32 = std::int32_t;
using f32 = float;
using u64 = std::uint64_t;
using s64 = std::int64_t;
using f64 = double;

template <class To, class From>
To as(From from) {
  static_assert(sizeof(To) == sizeof(From));
  To to;
  std::memcpy(&to, &from, sizeof to);
  return to;
}

[[noreturn, gnu::noinline, gnu::cold]] inline void fail(const char* error) { throw error; }

inline void require(bool holds, const char* otherwise) {
  if (!holds) fail(otherwise);
}

// As launch.py has them.

struct Array {
  u64 isConstant, address, size;
  char* data;
  u8* stores;   // how often each byte was stored; null: none may be
  u64 isState;  // whether what may be stored is read before
};

struct Launch {
  u64 gridX, gridY, gridZ, block;
  u64 points;  // threads beyond them stay away from global memory
  u64 isOff;   // whether roots, reciprocals and sums of products are what PTX allows at most
  u64 seed;
  const u64* parameters;
  const Array* arrays;
  u64 arrayCount;
};

constexpr u64 LOCAL = u64{1} << 32;  // where local memory begins among all addresses

struct Thread {
  const Launch& launch;
  u64 number, chance, blocks = 0;
  u8* local;  // a byte and its state for each byte of the arrays of its own: 1 there, 2 written

  u32 tid() const { return number % launch.block; }
  u32 ctaidX() const { return number / launch.block % launch.gridX; }
  u32 ctaidY() const { return number / launch.block / launch.gridX % launch.gridY; }
  u32 ctaidZ() const { return number / launch.block / launch.gridX / launch.gridY; }

  void visit(u64& visits) {
    ++visits;
    require(++blocks <= 1000000, "a thread does not come to its end");
  }

  u32 random(u32 below) {
    chance = chance * 6364136223846793005u + 1442695040888963407u;
    return static_cast<u32>(chance >> 33) % below;
  }
  int wayOff() { return launch.isOff ? static_cast<int>(random(3)) - 1 : 0; }
  bool fuses() { return launch.isOff && random(2) == 1; }

  template <class T>
  T parameter(int n) const {
    T value;
    std::memcpy(&value, &launch.parameters[n], sizeof value);
    return value;
  }

  const Array& arrayAt(u64 address, u64 size, bool isConstant) {
    require(isConstant || number < launch.points, "a thread beyond the last point works");
    for (u64 n = 0; n < launch.arrayCount; ++n) {
      const Array& array = launch.arrays[n];
      const u64 offset = address - array.address;
      if (array.isConstant == isConstant && offset < array.size && size <= array.size - offset)
        return array;
    }
    throw "an access outside of what the launch may use";
  }

  template <class T>
  T load(u64 address, bool isConstant) {
    const Array& array = arrayAt(address, sizeof(T), isConstant);
    const u64 offset = address - array.address;
    require(!array.stores || (array.isState && array.stores[offset] == 0), "a result is read");
    T value;
    std::memcpy(&value, array.data + offset, sizeof value);
    return value;
  }

  template <class T>
  void store(u64 address, T value) {
    const Array& array = arrayAt(address, sizeof(T), false);
    const u64 offset = address - array.address;
    require(array.stores, "what is only to be read is stored to");
    for (u64 n = 0; n < sizeof(T); ++n)
      require(array.stores[offset + n]++ == 0, "two stores to one address");
    std::memcpy(array.data + offset, &value, sizeof value);
  }

  template <class T>
  T loadLocal(u64 address, u64 end) const {
    require(address < end && sizeof(T) <= end - address, "local memory ends before");
    u8 bytes[sizeof(T)];
    for (u64 n = 0; n < sizeof(T); ++n) {
      require(local[2 * (address + n) + 1] == 2, "local memory is read before it is written");
      bytes[n] = local[2 * (address + n)];
    }
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
  }

  template <class T>
  void storeLocal(u64 address, u64 end, T value) {
    require(address < end && sizeof(T) <= end - address, "local memory ends before");
    u8 bytes[sizeof(T)];
    std::memcpy(bytes, &value, sizeof value);
    for (u64 n = 0; n < sizeof(T); ++n) {
      require(local[2 * (address + n) + 1] != 0, "there is no array in local memory");
      local[2 * (address + n)] = bytes[n];
      local[2 * (address + n) + 1] = 2;
    }
  }

  /// Of local or global memory.
  template <class T>
  T loadAny(u64 address, u64 localEnd) {
    const u64 offset = address - LOCAL;
    return offset < localEnd ? loadLocal<T>(offset, localEnd) : load<T>(address, false);
  }
  template <class T>
  void storeAny(u64 address, u64 localEnd, T value) {
    const u64 offset = address - LOCAL;
    if (offset < localEnd)
      storeLocal<T>(offset, localEnd, value);
    else
      store<T>(address, value);
  }
};

inline void align(u64 address, u64 size) {
  require(address % size == 0, "an address that is not aligned");
}

// By the PTX manual, where C++ has another meaning or none.

template <class T>
T shiftLeft(T a, u64 count) {
  return count < 8 * sizeof(T) ? static_cast<T>(a << count) : 0;
}
template <class T>
T shiftRight(T a, u64 count) {
  if (count < 8 * sizeof(T)) return a >> count;
  return a < 0 ? static_cast<T>(-1) : 0;
}
inline u64 ones(u64 length) { return length < 64 ? (u64{1} << length) - 1 : ~u64{0}; }
inline u64 insertBits(u64 field, u64 into, u32 position, u32 length) {
  const u64 mask = shiftLeft(ones(length & 255), position & 255);
  return (into & ~mask) | (shiftLeft(field, position & 255) & mask);
}
inline u32 extractBits(u32 a, u32 position, u32 length) {
  return static_cast<u32>(shiftRight(u64{a}, position & 255) & ones(length & 255));
}
inline u32 funnelLeft(u32 low, u32 high, u32 count) {
  return static_cast<u32>(((u64{high} << 32 | low) << (count & 31)) >> 32);
}
inline s64 divisor(s32 b) {
  require(b != 0, "a division by zero");
  return b;
}
/// An integer; what is out of range becomes the nearest that there is, NaN 0.
inline s32 toS32(f64 integer) {
  if (std::isnan(integer)) return 0;
  return static_cast<s32>(std::fmin(std::fmax(integer, -0x1p31), 0x1p31 - 1));
}

inline f32 flushed(f32 a) { return std::fabs(a) < FLT_MIN ? std::copysign(0.0f, a) : a; }

/// The last float below (`way` is -1) or above (1) `nearest` that is within `most`, which is less
/// than two units in the last place, of the exact value. What is not finite stays.
inline f32 near(f32 nearest, f64 exact, f64 most, int way) {
  for (int n = 0; n < 2; ++n) {
    const f32 moved = as<f32>(as<s32>(nearest) + way);
    if (std::isfinite(nearest) && std::fabs(moved - exact) <= most) nearest = moved;
  }
  return nearest;
}
/// Right to a share of 2^-23.
inline f32 sqrtApprox(f32 a, int way) {
  const f64 exact = std::sqrt(f64{flushed(a)});
  return near(static_cast<f32>(exact), exact, exact * 0x1p-23, way);
}
/// Right to a unit in the last place.
inline f32 rcpApprox(f32 a, int way) {
  const f64 exact = 1 / f64{flushed(a)};
  const f32 nearest = static_cast<f32>(exact), size = std::fabs(nearest);
  return flushed(near(nearest, exact, std::nextafter(size, INFINITY) - size, way));
}

/// Runs all threads of a launch; the error of the first that has one.
template <class Kernel>
const char* runThreads(const Launch& launch, u64* visits, u8* local, const u8* fresh, u64 localSize,
                       Kernel kernel) try {
  const u64 count = launch.gridX * launch.gridY * launch.gridZ * launch.block;
  for (u64 number = 0; number < count; ++number) {
    if (localSize > 0) std::memcpy(local, fresh, 2 * localSize);
    Thread thread{launch, number, launch.seed + number * 0x9E3779B97F4A7C15u, 0, local};
    thread.random(2);
    kernel(thread, visits);
  }
  return nullptr;
} catch (const char* error) {
  return error;
}
