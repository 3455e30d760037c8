#include <cuda_runtime.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPistonCuda.dp.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "FastNearfield/TestGrids.h"
#include "core/RuleOwner.h"
#include "emulation/TestControl.h"
#include "fuzz/Numbers.h"
#include "fuzz/Property.h"
#include "support/RecordingHandler.h"

// Calls every launcher with any grid. If the size is valid, all single-precision launchers must
// give the same bits as the launcher for lists, and all double-precision launchers the same bits as
// each other. If it is not, the error handler must be called. The arrays are no larger than
// necessary, so that the sanitizer detects any access beyond them.

namespace {

using fuzz::require;
using pistonfield::Complex;
using pistonfield::Complexd;
using pistonfield::ComplexPair;

constexpr double mostPoints = 4096;  // two ranges of threads

/// sx × sy × sz points; each size may be any int.
struct Size {
  int sx, sy, sz;

  /// Whether a device must evaluate such a grid. It must reject an empty grid and a grid of more
  /// points than an int can count.
  bool isRight() const {
    return sx > 0 && sy > 0 && sz > 0 && exactPoints() <= std::numeric_limits<int>::max();
  }
  /// Whether the grid is valid, but would take too long for a fuzzer.
  bool isLong() const { return isRight() && exactPoints() > mostPoints; }

  /// The number of points to allocate results for.
  std::size_t points() const { return isRight() ? static_cast<std::size_t>(exactPoints()) : 0; }

 private:
  double exactPoints() const { return double(sx) * sy * sz; }
};

int anyLength(FuzzedDataProvider& bytes) {
  static const int edges[] = {std::numeric_limits<int>::min(),
                              std::numeric_limits<int>::max(),
                              -1,
                              -2,
                              -3,
                              -65536,
                              0,
                              8,
                              46341,
                              65536,
                              1 << 21,
                              1 << 22,
                              1 << 30};
  const int choice = bytes.ConsumeIntegralInRange(0, 31);
  if (choice == 31) return bytes.ConsumeIntegral<int>();
  if (choice == 30) return bytes.PickValueInArray(edges);
  if (choice == 29) return bytes.ConsumeIntegralInRange(-3, 200);
  return 1 + choice % 12;
}

/// x, y, z of the points of a grid given by its axes.
std::vector<float> positions(const std::vector<float>& x, const std::vector<float>& y,
                             const std::vector<float>& z) {
  std::vector<float> list;
  for (const float pz : z)
    for (const float py : y)
      for (const float px : x) list.insert(list.end(), {px, py, pz});
  return list;
}

template <class Call>
bool fails(const Call& call) {
  const std::string condition = support::failureOf(call).condition;
  cudaGetLastError();
  require(emulationTestControl()->liveAllocations() == 0, "no device memory stays behind");
  return !condition.empty();
}

/// What a launcher wrote, or nothing if it failed.
template <class T>
using Values = std::optional<std::vector<ComplexPair<T>>>;

/// Initial value of every result, to detect results that were not written.
template <class T>
constexpr ComplexPair<T> unwritten{T(-12345), T(54321)};

template <class T, class Launcher>
Values<T> pairs(std::size_t count, const Launcher& launch) {
  std::vector<ComplexPair<T>> data(count, unwritten<T>);
  ComplexPair<T> none[1];
  if (fails([&] { launch(count > 0 ? data.data() : none); })) return {};
  return data;
}

template <class T, class Launcher>
Values<T> parts(std::size_t count, const Launcher& launch) {
  std::vector<T> re(count, unwritten<T>.re), im(count, unwritten<T>.im);
  T none[2];
  if (fails([&] { launch(count > 0 ? re.data() : none, count > 0 ? im.data() : none + 1); }))
    return {};
  std::vector<ComplexPair<T>> data;
  for (std::size_t i = 0; i < count; ++i) data.push_back({re[i], im[i]});
  return data;
}

template <class T>
bool sameValue(T p, T q) {
  return (std::isnan(p) && std::isnan(q)) || (p == q && std::signbit(p) == std::signbit(q));
}

template <class T>
bool same(const Values<T>& p, const Values<T>& q) {
  if (!p || !q) return !p && !q;
  if (p->size() != q->size()) return false;
  for (std::size_t i = 0; i < p->size(); ++i)
    if (!sameValue((*p)[i].re, (*q)[i].re) || !sameValue((*p)[i].im, (*q)[i].im)) return false;
  return true;
}

template <class T>
void requireWritten(const Values<T>& values) {
  for (const auto& p : *values)
    require(p.re != unwritten<T>.re || p.im != unwritten<T>.im, "every point has its pressure");
}

struct Piston {
  float a, b, k;
};

Values<float> list(const std::vector<float>& positions, const Piston& p) {
  std::vector<float> pos = positions;
  const auto count = static_cast<int>(pos.size() / 3);
  return pairs<float>(pos.size() / 3, [&](Complex* data) {
    RectangularPiston_func_unstructured(data, count, pos.data(), p.a, p.b, p.k);
  });
}

/// With more nodes, the fuzzer would have too little time for other inputs.
constexpr std::size_t mostNodes = std::size_t{1} << 16;

/// Loads the rule of an order, or a table with any values. If that fails, no rule is loaded.
/// Returns the number of nodes.
std::size_t loadRule(FuzzedDataProvider& bytes) {
  const char* const name = bytes.ConsumeIntegralInRange(0, 31) < 31 ? "RectangularPiston" : "Disc";
  const bool isModel = name[0] == 'R';
  const int order = bytes.ConsumeBool() ? bytes.ConsumeIntegralInRange(1, 12)
                                        : bytes.ConsumeIntegralInRange(-3, 520);
  const bool isOrder = order >= 1 && order <= 512;
  const auto half = static_cast<std::size_t>(isOrder ? (order + 1) / 2 : 1);
  switch (bytes.ConsumeIntegralInRange(0, 3)) {
    case 0: {
      const auto x = fuzz::numbers<float>(bytes, half), w = fuzz::numbers<float>(bytes, half);
      require(fails([&] { setIntegratorWeightsSym(name, x.data(), w.data(), order); }) ==
                  !(isModel && isOrder),
              "a table of single precision is loaded if it can be");
      break;
    }
    case 1: {  // for an unknown model, as on a device without double precision
      const auto x = fuzz::numbers<double>(bytes, half), w = fuzz::numbers<double>(bytes, half);
      require(
          fails([&] { setIntegratorWeightsSym_d(name, x.data(), w.data(), order); }) == !isOrder,
          "a table of double precision is loaded if it can be");
      break;
    }
    default:
      require(fails([&] { setCudaIntegratorParameters(name, order); }) == !(isModel && isOrder),
              "a rule is loaded if there is one");
  }
  return isOrder ? static_cast<std::size_t>(order) : 0;
}

/// Checks the launcher for lists with all points of a grid, and with one of them alone.
Values<float> checkList(FuzzedDataProvider& bytes, const std::vector<float>& positions,
                        const Piston& piston) {
  const Values<float> expected = list(positions, piston);
  require(expected.has_value(), "a list of points is evaluated");
  requireWritten(expected);
  const auto n = bytes.ConsumeIntegralInRange<std::size_t>(0, expected->size() - 1);
  const auto first = positions.begin() + static_cast<std::ptrdiff_t>(3 * n);
  require(same(list({first, first + 3}, piston), Values<float>({(*expected)[n]})),
          "a point's pressure depends on its own place only");
  return expected;
}

template <class T>
void requireSame(const Values<T>& expected, const char* launcher, const Values<T>& actual) {
  require(same(expected, actual), std::string(launcher) + " gives what the list gives");
}

void checkMappedGrid(FuzzedDataProvider& bytes, const Size& size, const Piston& p) {
  std::vector<float> t = fuzz::numbers<float>(bytes, 16);
  Values<float> expected;
  if (size.isRight())
    expected = checkList(
        bytes, test_grids::transformedPositions({size.sx, size.sy, size.sz}, t.data()), p);
  const int sx = size.sx, sy = size.sy, sz = size.sz;
  requireSame(expected, "RectangularPiston_func", pairs<float>(size.points(), [&](Complex* data) {
                RectangularPiston_func(data, sx, sy, sz, t.data(), p.a, p.b, p.k);
              }));
  requireSame(expected, "RectangularPiston_func2",
              parts<float>(size.points(), [&](float* re, float* im) {
                RectangularPiston_func2(re, im, sx, sy, sz, t.data(), p.a, p.b, p.k);
              }));
  requireSame(expected, "do_calculate_grid", pairs<float>(size.points(), [&](Complex* data) {
                do_calculate_grid(data, sx, sy, sz, t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7],
                                  t[8], t[9], t[10], t[11], p.a, p.b, p.k);
              }));
}

void checkAxes(FuzzedDataProvider& bytes, const Size& size, const Piston& p) {
  const auto axis = [&](int length) {
    // For longer lists the device has too little memory, so nothing is read.
    constexpr int most = 1 << 26;
    std::vector<float> values =
        fuzz::numbers<float>(bytes, static_cast<std::size_t>(std::clamp(length, 1, 64)));
    if (length > 64 && length <= most) values.resize(static_cast<std::size_t>(length));
    return values;
  };
  std::vector<float> x = axis(size.sx), y = axis(size.sy), z = axis(size.sz);
  Values<float> expected;
  if (size.isRight()) expected = checkList(bytes, positions(x, y, z), p);
  requireSame(expected, "RectangularPiston_func_structured",
              pairs<float>(size.points(), [&](Complex* data) {
                RectangularPiston_func_structured(data, size.sx, size.sy, size.sz, x.data(),
                                                  y.data(), z.data(), p.a, p.b, p.k);
              }));
}

void checkSteps(FuzzedDataProvider& bytes, const Size& size, const Piston& p) {
  const std::vector<float> step = fuzz::numbers<float>(bytes, 3);
  const auto axis = [](int length, float d) {
    std::vector<float> values;
    for (int i = 0; i < length; ++i) values.push_back(static_cast<float>(i) * d);
    return values;
  };
  Values<float> expected;
  if (size.isRight())
    expected = checkList(
        bytes, positions(axis(size.sx, step[0]), axis(size.sy, step[1]), axis(size.sz, step[2])),
        p);
  requireSame(expected, "do_calculate", pairs<float>(size.points(), [&](Complex* data) {
                do_calculate(data, size.sx, size.sy, size.sz, step[0], step[1], step[2], p.a, p.b,
                             p.k);
              }));
}

void checkDoublePrecision(FuzzedDataProvider& bytes, const Size& size) {
  std::vector<double> t = fuzz::numbers<double>(bytes, 16);
  const std::vector<double> p = fuzz::numbers<double>(bytes, 3);
  const int sx = size.sx, sy = size.sy, sz = size.sz;
  const Values<double> expected = pairs<double>(size.points(), [&](Complexd* data) {
    RectangularPiston_func_d(data, sx, sy, sz, t.data(), p[0], p[1], p[2]);
  });
  require(expected.has_value() == size.isRight(), "RectangularPiston_func_d fails if it must");
  if (expected) requireWritten(expected);
  requireSame(expected, "RectangularPiston_func2_d",
              parts<double>(size.points(), [&](double* re, double* im) {
                RectangularPiston_func2_d(re, im, sx, sy, sz, t.data(), p[0], p[1], p[2]);
              }));
  requireSame(expected, "do_calculate_grid_d", pairs<double>(size.points(), [&](Complexd* data) {
                do_calculate_grid_d(data, sx, sy, sz, t[0], t[1], t[2], t[3], t[4], t[5], t[6],
                                    t[7], t[8], t[9], t[10], t[11], p[0], p[1], p[2]);
              }));
  const Values<double> steps = pairs<double>(size.points(), [&](Complexd* data) {
    do_calculate_d(data, sx, sy, sz, t[0], t[5], t[10], p[0], p[1], p[2]);
  });
  require(steps.has_value() == size.isRight(), "do_calculate_d fails if it must");
}

/// Lists whose length is none.
void checkListLength(FuzzedDataProvider& bytes, const Piston& p) {
  const int length = -bytes.ConsumeIntegralInRange(0, std::numeric_limits<int>::max()) -
                     (bytes.ConsumeBool() ? 1 : 0);
  float pos[3] = {};
  require(!pairs<float>(0,
                        [&](Complex* data) {
                          RectangularPiston_func_unstructured(data, length, pos, p.a, p.b, p.k);
                        }),
          "a list of no points is refused");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider bytes(data, size);
  emulationTestControl()->restore();
  pistonfield::forgetRules();
  if (bytes.ConsumeBool()) {
    emulationTestControl()->separateMemory();
    emulationTestControl()->poisonFreshMemory();
  }
  do_timing = bytes.ConsumeBool() ? 1 : 0;
  const int choice = bytes.ConsumeIntegralInRange(0, 8);
  const int sx = anyLength(bytes), sy = anyLength(bytes), sz = anyLength(bytes);
  const Size grid{sx, sy, sz};
  if (grid.isLong()) return 0;
  const std::size_t nodes = loadRule(bytes);
  if (grid.points() * nodes > mostNodes) return 0;
  const std::vector<float> p = fuzz::numbers<float>(bytes, 3);
  const Piston piston{p[0], p[1], p[2]};
  switch (choice) {
    case 0:
    case 1:
      checkMappedGrid(bytes, grid, piston);
      break;
    case 2:
      checkAxes(bytes, grid, piston);
      break;
    case 3:
      checkSteps(bytes, grid, piston);
      break;
    case 4:
      checkDoublePrecision(bytes, grid);
      break;
    default:
      checkListLength(bytes, piston);
  }
  return 0;
}
