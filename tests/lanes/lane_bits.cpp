// lane_bits packed|scalar
//
// Prints the bits of a fixed list of pressures, computed in packs or one point at a time, for
// comparison with those of another processor.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <vector>

#include "FastNearfield/packs/PackedPressure.h"
#include "FastNearfield/point/HalfAngleIntegrand.h"
#include "support/LiteralPressure.h"

using pistonfield::Complex;

namespace {

/// Random numbers that are the same everywhere, unlike those of the distributions in <random>.
class Random {
 public:
  /// In [-1, 1).
  float operator()() {
    state_ = state_ * 1664525u + 1013904223u;
    return static_cast<float>(state_ >> 8) / 8388608.0f - 1;
  }

 private:
  std::uint32_t state_ = 1;
};

constexpr float a = 0.75f, b = 0.5f, k = 12.5f;

std::vector<float> positions() {
  const float inf = std::numeric_limits<float>::infinity();
  const float special[] = {0,      1e-7f, -5e-8f, a,    b,
                           -b,     0.25f, 2,      -8,   8e3f,
                           1e-45f, 1e19f, inf,    -inf, std::numeric_limits<float>::quiet_NaN()};
  std::vector<float> values;
  for (const float x : special)
    for (const float y : special)
      for (const float z : {1.0f, 0.0f, -0.5f}) values.insert(values.end(), {x, y, z});
  for (const float z : special) values.insert(values.end(), {0.25f, 0.125f, z});
  Random random;
  for (int run = 0; run < 40; ++run) {
    // Packs of points of the same case, and mixed packs.
    const float width = run % 2 == 0 ? 0.5f : 2;
    for (int n = 0; n < 20; ++n) {
      const float x = width * random(), y = width * random(), z = 10 * random();
      values.insert(values.end(), {x, y, z});
    }
  }
  return values;
}

void print(float value) {
  // The sign and the payload of a NaN depend on the processor.
  if (value != value) {
    std::printf(" nan     ");
    return;
  }
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  std::printf(" %08x", bits);
}

}  // namespace

int main(int argc, char** argv) {
  const bool packed = argc == 2 && std::strcmp(argv[1], "packed") == 0;
  const std::vector<float> points = positions();
  const auto count = static_cast<int>(points.size() / 3);
  for (const int order : {1, 9, 10}) {
    const support::HalfRule<float> rule(order);
    std::printf("order %d\n", order);
    std::vector<Complex> pressures(static_cast<std::size_t>(count));
    if (packed)
      pistonfield::packedPressure(pistonfield::instructionSet())(points.data(), pressures.data(),
                                                                 count, a, b, k, rule.view(), {});
    for (std::size_t i = 0; i < pressures.size(); ++i) {
      const float* const point = &points[3 * i];
      if (!packed)
        pressures[i] = pistonfield::pointPressure<pistonfield::HalfAngleIntegrand>(
            point[0], point[1], point[2], a, b, k, rule.view());
      std::printf("%zu (%a, %a, %a)", i, double{point[0]}, double{point[1]}, double{point[2]});
      print(pressures[i].re);
      print(pressures[i].im);
      std::printf("\n");
    }
  }
  return std::fflush(stdout) == 0 && !std::ferror(stdout) ? 0 : 1;
}
