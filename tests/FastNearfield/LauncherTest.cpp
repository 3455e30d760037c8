#include <algorithm>
#include <chrono>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "FastNearfield/LaunchShape.h"
#include "FastNearfield/Launchers.h"
#include "core/Interruption.h"
#include "support/DeviceArrays.h"
#include "support/SameBits.h"

using launchers::a;
using launchers::b;
using launchers::Complex;
using launchers::Complexd;
using launchers::k;
using pistonfield::iDivUp;
using support::quietFailureOf;

namespace {

class LauncherTest : public launchers::Test {
 protected:
  void TearDown() override {
    pistonfield::setInterruptionCheck(nullptr);
    launchers::Test::TearDown();
  }

  /// The number of calls of the runtime's function since `recordCalls`.
  std::size_t callsOf(const std::string& function) {
    const std::vector<std::string> functions = functionsCalled();
    return static_cast<std::size_t>(std::count(functions.begin(), functions.end(), function));
  }

  /// Returns what call(results, input) computes where `results` begins `shift` floats after the
  /// first of `input`.
  template <class Call>
  static launchers::Values computedOver(const std::vector<float>& input, std::size_t shift,
                                        std::size_t points, Call call) {
    std::vector<float> all(input);
    all.resize(std::max(input.size(), shift + 2 * points));
    auto* const results = reinterpret_cast<Complex*>(all.data() + shift);
    call(results, all.data());
    return launchers::widened(std::vector<Complex>(results, results + points));
  }

  static inline std::size_t checks = 0;  // for interruptions
};

TEST_F(LauncherTest, PointNumber8193StartsASecondColumnOfBlocks) {
  std::vector<Complex> data(8193);
  std::vector<float> pos(3 * data.size(), 1);
  RectangularPiston_func_unstructured(data.data(), 8193, pos.data(), a, b, k);
  EXPECT_EQ(printed(), "allocating 32772 bytes\nnbPos8193\ngrid: 2 64 1\n16384\n");
  EXPECT_TRUE(support::sameBits(data[8192], data[0]));
  EXPECT_NE(data[8192].re, 0.0f);
}

TEST_F(LauncherTest, ALongListIsOneLaunchOnTheDeviceAndInPiecesFromTheHost) {
  constexpr int count = 21000;
  setCudaIntegratorParameters("RectangularPiston", 512);
  std::vector<float> pos;
  for (int n = 0; n < count; ++n) pos.insert(pos.end(), {0.1f, 0.2f, 1 + 0.001f * float(n)});
  support::GuardedArray<Complex> d_array(count);
  const support::Uploaded<float> d_pos(pos);
  const std::string shape = "nbPos21000\ngrid: 3 64 1\n24576\n";
  checks = 0;
  pistonfield::setInterruptionCheck([] { ++checks; });
  printed();

  device.recordCalls();
  RectangularPiston_func_unstructured_device(d_array.device(), count, d_pos.get(), a, b, k);
  EXPECT_EQ(device.calls().size(), 3u);  // a stage, the launch and a stage
  EXPECT_EQ(callsOf("cudaLaunchKernel"), 1u);
  EXPECT_EQ(callsOf("cudaDeviceSynchronize"), 0u);
  EXPECT_EQ(checks, 0u);
  EXPECT_EQ(printed(), shape);

  device.recordCalls();
  std::vector<Complex> pieces(count);
  RectangularPiston_func_unstructured(pieces.data(), count, pos.data(), a, b, k);
  EXPECT_GE(callsOf("cudaLaunchKernel"), 2u);
  EXPECT_EQ(callsOf("cudaDeviceSynchronize"), callsOf("cudaLaunchKernel") - 1);
  EXPECT_EQ(checks, callsOf("cudaLaunchKernel") - 1);
  EXPECT_EQ(printed(), "allocating 84000 bytes\n" + shape);
  EXPECT_TRUE(support::sameBits(pieces, d_array.read()));
}

TEST_F(LauncherTest, DividesRoundingUp) {
  EXPECT_EQ(iDivUp(0, 8), 0);
  EXPECT_EQ(iDivUp(8, 8), 1);
  EXPECT_EQ(iDivUp(9, 8), 2);
  EXPECT_EQ(iDivUp(65, 64), 2);
  EXPECT_EQ(iDivUp(2147483647, 16), 134217728);
}

TEST_F(LauncherTest, TheTimeIsThatOfAllPiecesInMicroseconds) {
  using std::chrono::steady_clock;
  constexpr int count = 20481;  // two pieces
  setCudaIntegratorParameters("RectangularPiston", 512);
  std::vector<Complex> data(count);
  std::vector<float> pos(std::size_t{3} * count, 1);
  do_timing = 1;
  pistonfield::setInterruptionCheck(
      [] { std::this_thread::sleep_for(std::chrono::milliseconds(20)); });
  const steady_clock::time_point start = steady_clock::now();
  RectangularPiston_func_unstructured(data.data(), count, pos.data(), a, b, k);
  const std::chrono::duration<double, std::micro> whole = steady_clock::now() - start;
  EXPECT_GE(global_time, 20000);
  EXPECT_LE(global_time, whole.count() + 1);
}

TEST_F(LauncherTest, SizesBelowOneFail) {
  std::vector<Complex> data(6);
  std::vector<Complexd> data_d(6);
  std::vector<double> t = launchers::doubleTransform();
  const auto grid = [&](int sx, int sy, int sz) {
    cudaGetLastError();  // what the one before has left
    return quietFailureOf([&] { do_calculate(data.data(), sx, sy, sz, 1, 1, 1, a, b, k); })
        .condition;
  };
  const auto list = [&](int count) {
    return quietFailureOf(
               [&] { RectangularPiston_func_unstructured(nullptr, count, nullptr, a, b, k); })
        .condition;
  };
  const std::string refused = "invalid configuration argument";
  EXPECT_EQ(list(0), refused);
  EXPECT_EQ(grid(0, 1, 1), refused);
  // One is a negative number of bytes, two are a number of points.
  EXPECT_EQ(list(-1),
            "Cuda error when calling cudaMalloc((void**)&d_arrayr, datasize*2): out of memory");
  EXPECT_EQ(grid(-1, 1, 1),
            "Cuda error when calling cudaMalloc((void**)&d_array, datasize): out of memory");
  EXPECT_EQ(grid(-2, -3, 1), refused);
  EXPECT_EQ(quietFailureOf([&] {
              RectangularPiston_func_d(data_d.data(), 1, -3, -2, t.data(), a, b, k);
            }).condition,
            refused);
  // Their product overflows 64 bits, and leaves no bytes to allocate.
  EXPECT_EQ(grid(std::numeric_limits<int>::min(), 1 << 30, -8), refused);
}

TEST_F(LauncherTest, ResultsMayLieOverWhatTheyAreComputedFrom) {
  const launchers::Size size{40, 50, 2};
  const auto [sx, sy, sz] = size;
  const auto points = static_cast<int>(size.points());
  const std::vector<float> positions = launchers::gridPositions(size, launchers::Map::AXES),
                           transform(launchers::transform, launchers::transform + 16);
  const std::vector<float> axes[] = {launchers::axis(sx, 0.5f, -1),
                                     launchers::axis(sy, 0.25f, 0.5f), launchers::axis(sz, 2, 1)};
  for (const Memory memory : {Memory::SEPARATE, Memory::HOSTS}) {
    startAfresh(memory);
    const launchers::Values expected = launchers::unstructured(size),
                            mapped = launchers::grid(size);
    for (const std::size_t shift : {0u, 2u, 10u}) {
      EXPECT_EQ(computedOver(positions, shift, size.points(),
                             [&](Complex* data, float* pos) {
                               RectangularPiston_func_unstructured(data, points, pos, a, b, k);
                             }),
                expected);
      EXPECT_EQ(computedOver(transform, shift, size.points(),
                             [&, sx = sx, sy = sy, sz = sz](Complex* data, float* t) {
                               RectangularPiston_func(data, sx, sy, sz, t, a, b, k);
                             }),
                mapped);
      for (std::size_t n = 0; n < 3; ++n)
        EXPECT_EQ(computedOver(axes[n], shift, size.points(),
                               [&, sx = sx, sy = sy, sz = sz](Complex* data, float* axis) {
                                 std::vector<float> x = axes[0], y = axes[1], z = axes[2];
                                 float* of[] = {x.data(), y.data(), z.data()};
                                 of[n] = axis;
                                 RectangularPiston_func_structured(data, sx, sy, sz, of[0], of[1],
                                                                   of[2], a, b, k);
                               }),
                  expected)
            << "axis " << n;
    }
  }
}

TEST_F(LauncherTest, ImaginaryPartsMayLieOverRealParts) {
  const auto [sx, sy, sz] = launchers::small;
  const std::size_t points = launchers::small.points(), shift = 7;
  std::vector<float> t(launchers::transform, launchers::transform + 16);
  for (const Memory memory : {Memory::SEPARATE, Memory::HOSTS}) {
    startAfresh(memory);
    const launchers::Values field = launchers::split(launchers::small);
    std::vector<double> expected(shift + points);
    for (std::size_t n = 0; n < points; ++n) expected[n] = field[n].real();
    for (std::size_t n = 0; n < points; ++n) expected[shift + n] = field[n].imag();
    std::vector<float> all(shift + points);
    RectangularPiston_func2(all.data(), &all[shift], sx, sy, sz, t.data(), a, b, k);
    EXPECT_EQ(std::vector<double>(all.begin(), all.end()), expected);
  }
}

TEST_F(LauncherTest, ResortInterleaves) {
  float two[] = {1, 2, -1, -2};  // r0 r1 i0 i1
  resort(two, 2);
  EXPECT_EQ(std::vector<float>(two, two + 4), (std::vector<float>{1, -1, 2, -2}));
  float three[] = {1, 2, 3, -1, -2, -3};
  resort(three, 3);
  EXPECT_EQ(std::vector<float>(three, three + 6), (std::vector<float>{1, -1, 2, -2, 3, -3}));
}

}  // namespace
