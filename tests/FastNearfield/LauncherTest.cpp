#include <algorithm>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/LaunchShape.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "support/DeviceTest.h"
#include "support/SameBits.h"

using pistonfield::Complex;
using pistonfield::iDivUp;
using support::Failure;
using support::failureOf;
using support::sameBits;

namespace {

/// Every launcher on a grid of 3 × 2 × 2 points, with sides a = 2 along y and b = 4 along x.
constexpr int sx = 3, sy = 2, sz = 2, points = 12;
constexpr float a = 2, b = 4, k = 5;

float t[16] = {0.5f, 0, 0, -1, 0, 0.25f, 0, 0.5f, 0, 0, 2, 1, 0, 0, 0, 1};

std::vector<float> gridPositions() {
  std::vector<float> positions;
  for (int l = 0; l < sz; ++l)
    for (int j = 0; j < sy; ++j)
      for (int i = 0; i < sx; ++i)
        positions.insert(positions.end(),
                         {static_cast<float>(i) * 0.5f - 1, static_cast<float>(j) * 0.25f + 0.5f,
                          static_cast<float>(l) * 2 + 1});
  return positions;
}

std::vector<Complex> unstructured() {
  std::vector<float> positions = gridPositions();
  std::vector<Complex> data(points);
  RectangularPiston_func_unstructured(data.data(), points, positions.data(), a, b, k);
  return data;
}

std::vector<Complex> grid() {
  std::vector<Complex> data(points);
  RectangularPiston_func(data.data(), sx, sy, sz, t, a, b, k);
  return data;
}

std::vector<Complex> split() {
  std::vector<float> re(points), im(points);
  RectangularPiston_func2(re.data(), im.data(), sx, sy, sz, t, a, b, k);
  std::vector<Complex> data;
  for (std::size_t i = 0; i < points; ++i) data.push_back({re[i], im[i]});
  return data;
}

std::vector<Complex> structured() {
  float x[sx] = {-1, -0.5f, 0}, y[sy] = {0.5f, 0.75f}, z[sz] = {1, 3};
  std::vector<Complex> data(points);
  RectangularPiston_func_structured(data.data(), sx, sy, sz, x, y, z, a, b, k);
  return data;
}

std::vector<Complex> twelveScalars() {
  std::vector<Complex> data(points);
  do_calculate_grid(data.data(), sx, sy, sz, t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8],
                    t[9], t[10], t[11], a, b, k);
  return data;
}

std::vector<Complex> fromCentre() {
  std::vector<Complex> data(points);
  do_calculate(data.data(), sx, sy, sz, 0.5f, 0.25f, 2, a, b, k);
  return data;
}

/// One step of a launcher that can fail: a stage with its label, or a call of the runtime with the
/// text that its report shows.
struct Step {
  std::string function;  // empty for a stage
  std::string text;
};

Step stage(const std::string& label) { return {"", label}; }

struct Launcher {
  std::string name;
  std::function<std::vector<Complex>()> call;
  std::vector<Step> steps;
};

void PrintTo(const Launcher& launcher, std::ostream* out) { *out << launcher.name; }

const Step uploadTransform[] = {
    {"cudaMalloc", "cudaMalloc((void**)&d_transform, 16*sizeof(float))"},
    {"cudaMemcpy",
     "cudaMemcpy( d_transform, transform, 16*sizeof(float), cudaMemcpyHostToDevice )"}};

const std::vector<Launcher> launchers = {
    {"RectangularPiston_func_unstructured",
     unstructured,
     {stage("pre do_calculate_grid"),
      {"cudaMalloc", "cudaMalloc((void**)&d_arrayr, datasize*2)"},
      {"cudaMalloc", "cudaMalloc((void**)&d_pos, nbPositions*3*sizeof(float))"},
      {"cudaMemcpy",
       "cudaMemcpy(&d_pos[0], &pos[0], nbPositions*3*sizeof(float), cudaMemcpyHostToDevice)"},
      stage("pre RectangularPison_func_device"),
      {"cudaDeviceSynchronize", "cudaThreadSynchronize()"},
      stage("RectangularPiston_func_device"),
      {"cudaMemcpy", "cudaMemcpy( &data[0], d_arrayr, datasize*2, cudaMemcpyDeviceToHost )"},
      {"cudaFree", "cudaFree(d_pos)"},
      {"cudaFree", "cudaFree(d_arrayr)"}}},
    {"RectangularPiston_func",
     grid,
     {stage("pre RectangularPiston_func"),
      {"cudaMalloc", "cudaMalloc((void**)&d_array, datasize)"},
      stage("pre RectangularPison_func_device"),
      uploadTransform[0],
      uploadTransform[1],
      {"cudaDeviceSynchronize", "cudaThreadSynchronize()"},
      stage("RectangularPiston_func_device"),
      {"cudaFree", "cudaFree(d_transform)"},
      {"cudaMemcpy", "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )"},
      {"cudaFree", "cudaFree(d_array)"}}},
    {"RectangularPiston_func2",
     split,
     {stage("pre do_calculate_grid"),
      {"cudaMalloc", "cudaMalloc((void**)&d_arrayr, datasize)"},
      {"cudaMalloc", "cudaMalloc((void**)&d_arrayi, datasize)"},
      stage("pre RectangularPiston_func2_device"),
      uploadTransform[0],
      uploadTransform[1],
      {"cudaDeviceSynchronize", "cudaThreadSynchronize()"},
      stage("RectangularPiston_func2_device"),
      {"cudaFree", "cudaFree(d_transform)"},
      {"cudaMemcpy", "cudaMemcpy( &datar[0], d_arrayr, datasize, cudaMemcpyDeviceToHost )"},
      {"cudaMemcpy", "cudaMemcpy( &datai[0], d_arrayi, datasize, cudaMemcpyDeviceToHost )"},
      {"cudaFree", "cudaFree(d_arrayr)"},
      {"cudaFree", "cudaFree(d_arrayi)"}}},
    {"RectangularPiston_func_structured",
     structured,
     {stage("pre do_calculate_grid"),
      {"cudaMalloc", "cudaMalloc((void**)&d_arrayr, datasize*2)"},
      {"cudaMalloc", "cudaMalloc((void**)&d_posx, sx * sizeof(float))"},
      {"cudaMalloc", "cudaMalloc((void**)&d_posy, sy * sizeof(float))"},
      {"cudaMalloc", "cudaMalloc((void**)&d_posz, sz * sizeof(float))"},
      {"cudaMemcpy", "cudaMemcpy(&d_posx[0], &posx[0], sx*sizeof(float), cudaMemcpyHostToDevice)"},
      {"cudaMemcpy", "cudaMemcpy(&d_posy[0], &posy[0], sy*sizeof(float), cudaMemcpyHostToDevice)"},
      {"cudaMemcpy", "cudaMemcpy(&d_posz[0], &posz[0], sz*sizeof(float), cudaMemcpyHostToDevice)"},
      stage("pre RectangularPison_func_device"),
      {"cudaDeviceSynchronize", "cudaThreadSynchronize()"},
      stage("RectangularPiston_func_device"),
      {"cudaMemcpy", "cudaMemcpy( &data[0], d_arrayr, datasize*2, cudaMemcpyDeviceToHost )"},
      {"cudaFree", "cudaFree(d_posz)"},
      {"cudaFree", "cudaFree(d_posy)"},
      {"cudaFree", "cudaFree(d_posx)"},
      {"cudaFree", "cudaFree(d_arrayr)"}}},
    {"do_calculate_grid",
     twelveScalars,
     {stage("pre do_calculate_grid"),
      {"cudaMalloc", "cudaMalloc((void**)&d_array, datasize)"},
      {"cudaDeviceSynchronize", "cudaThreadSynchronize()"},
      stage("calculate_grid"),
      {"cudaMemcpy", "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )"},
      {"cudaFree", "cudaFree(d_array)"}}},
    {"do_calculate",
     fromCentre,
     {stage("pre do_calculate"),
      {"cudaMalloc", "cudaMalloc((void**)&d_array, datasize)"},
      stage("calculate"),
      {"cudaMemcpy", "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )"},
      {"cudaFree", "cudaFree(d_array)"}}}};

class LauncherTest : public support::EmulationTest {
 protected:
  void SetUp() override {
    EmulationTest::SetUp();
    do_timing = 0;
    loadRule();
  }
  void TearDown() override {
    do_timing = 0;
    EmulationTest::TearDown();
  }

  void loadRule() {
    setCudaIntegratorParameters("RectangularPiston", 10);
    output();
    captureAgain();
  }

  std::string printed() {
    std::string text = output();
    captureAgain();
    return text;
  }

  /// The only launch since recordCalls.
  emulation::Call launchOf(const std::function<void()>& call) {
    device.recordCalls();
    call();
    const std::vector<emulation::Call> calls = device.calls();
    const auto isLaunch = [](const emulation::Call& made) {
      return std::string(made.function) == "cudaLaunchKernel";
    };
    EXPECT_EQ(std::count_if(calls.begin(), calls.end(), isLaunch), 1);
    return *std::find_if(calls.begin(), calls.end(), isLaunch);
  }

  std::vector<std::size_t> allocationsOf(const std::function<void()>& call) {
    device.recordCalls();
    call();
    std::vector<std::size_t> sizes;
    for (const emulation::Call& made : device.calls())
      if (std::string(made.function) == "cudaMalloc") sizes.push_back(made.bytes);
    return sizes;
  }
};

class EveryLauncherTest : public LauncherTest, public testing::WithParamInterface<Launcher> {};

TEST_P(EveryLauncherTest, EveryFailingStepIsReportedByItsText) {
  const Launcher& launcher = GetParam();
  std::map<std::string, int> occurrence;
  for (const Step& step : launcher.steps) {
    device.restore();
    loadRule();
    do_timing = 1;
    const bool isStage = step.function.empty();
    const std::string function = isStage ? "cudaGetLastError" : step.function;
    device.failCall(function, ++occurrence[function], cudaErrorUnknown, false);
    testing::internal::CaptureStderr();
    const Failure failure = failureOf([&] { launcher.call(); });
    const std::string standardError = testing::internal::GetCapturedStderr();

    EXPECT_EQ(failure.file, "src/FastNearfield/RectangularPistonCuda");
    if (isStage) {
      EXPECT_EQ(failure.condition, "unknown error") << step.text;
      EXPECT_EQ(standardError, "Cuda error: " + step.text +
                                   " in file 'src/FastNearfield/RectangularPistonCuda' in line " +
                                   std::to_string(failure.line) + " : unknown error.\n");
    } else {
      EXPECT_EQ(failure.condition, "Cuda error when calling " + step.text + ": unknown error");
      EXPECT_EQ(standardError, "");
    }
    // A failing cudaFree frees nothing; all else must be freed as the error unwinds.
    EXPECT_EQ(device.liveAllocations(), function == "cudaFree" ? 1u : 0u) << step.text;
  }
}

TEST_P(EveryLauncherTest, AllItsCallsOfTheRuntimeAreInTheList) {
  do_timing = 1;
  device.recordCalls();
  GetParam().call();
  std::vector<std::string> expected, made;
  for (const Step& step : GetParam().steps)
    expected.push_back(step.function.empty() ? "cudaGetLastError" : step.function);
  for (const emulation::Call& call : device.calls())
    if (std::string(call.function) != "cudaLaunchKernel") made.emplace_back(call.function);
  EXPECT_EQ(made, expected);
}

TEST_P(EveryLauncherTest, AFailingLaunchShowsAtTheStageAfterIt) {
  device.failCall("cudaLaunchKernel", 1, cudaErrorLaunchFailure, false);
  testing::internal::CaptureStderr();
  const Failure failure = failureOf([&] { GetParam().call(); });
  EXPECT_EQ(failure.condition, "unspecified launch failure");
  std::string label;
  for (const Step& step : GetParam().steps)
    if (step.function.empty()) label = step.text;
  EXPECT_NE(testing::internal::GetCapturedStderr().find("Cuda error: " + label + " in file"),
            std::string::npos);
}

TEST_P(EveryLauncherTest, CarriesOnWhenTheHandlerReturns) {
  std::vector<Failure> failures;
  pistonfield::ErrorHandler::setErrorHandler(new support::ReturningHandler(failures));
  device.failCall("cudaMalloc", 1, cudaErrorMemoryAllocation, false);
  testing::internal::CaptureStderr();
  device.failCall("cudaLaunchKernel", 1, cudaErrorLaunchFailure, false);
  GetParam().call();
  testing::internal::GetCapturedStderr();
  EXPECT_GE(failures.size(), 2u);
  EXPECT_EQ(device.liveAllocations(), 0u);
}

TEST_P(EveryLauncherTest, LeavesNothingOnTheDevice) {
  GetParam().call();
  EXPECT_EQ(device.liveAllocations(), 0u);
}

TEST_P(EveryLauncherTest, MeasuresTheLaunchWhileTimingIsOn) {
  const bool timed = GetParam().name != "do_calculate";
  global_time = -1;
  GetParam().call();
  EXPECT_EQ(global_time, -1);
  do_timing = 1;
  GetParam().call();
  if (timed)
    EXPECT_GE(global_time, 0);
  else
    EXPECT_EQ(global_time, -1);
  const double last = global_time;
  do_timing = 0;
  GetParam().call();
  EXPECT_EQ(global_time, last);
}

TEST_P(EveryLauncherTest, GivesWhatTheListOfPointsGives) {
  device.poisonFreshMemory();
  std::vector<float> positions = gridPositions();
  if (GetParam().name == "do_calculate")
    for (std::size_t i = 0; i < points; ++i) {
      positions[3 * i] += 1;
      positions[3 * i + 1] -= 0.5f;
      positions[3 * i + 2] -= 1;
    }
  std::vector<Complex> expected(points);
  RectangularPiston_func_unstructured(expected.data(), points, positions.data(), a, b, k);
  const std::vector<Complex> actual = GetParam().call();
  EXPECT_TRUE(sameBits(actual, expected));
}

INSTANTIATE_TEST_SUITE_P(All, EveryLauncherTest, testing::ValuesIn(launchers),
                         [](const auto& launcher) { return launcher.param.name; });

TEST_F(LauncherTest, OnePointPrintsItsShapeAndHalfItsBytes) {
  std::vector<Complex> data(1);
  float pos[] = {0, 0, 1};
  const std::vector<std::size_t> allocations =
      allocationsOf([&] { RectangularPiston_func_unstructured(data.data(), 1, pos, a, b, k); });
  EXPECT_EQ(printed(), "allocating 4 bytes\nnbPos1\ngrid: 1 64 1\n8192\n");
  EXPECT_EQ(allocations, (std::vector<std::size_t>{8, 12}));
}

TEST_F(LauncherTest, OnePointLaunches64BlocksOf128Threads) {
  std::vector<Complex> data(1);
  float pos[] = {0, 0, 1};
  const emulation::Call launch =
      launchOf([&] { RectangularPiston_func_unstructured(data.data(), 1, pos, a, b, k); });
  EXPECT_EQ(launch.grid.x, 1u);
  EXPECT_EQ(launch.grid.y, 64u);
  EXPECT_EQ(launch.grid.z, 1u);
  EXPECT_EQ(launch.block.x, 128u);
  EXPECT_EQ(launch.block.y, 1u);
  EXPECT_EQ(launch.block.z, 1u);
}

TEST_F(LauncherTest, PointNumber8193StartsASecondColumnOfBlocks) {
  std::vector<Complex> data(8193);
  std::vector<float> pos(3 * data.size(), 1);
  const emulation::Call launch = launchOf(
      [&] { RectangularPiston_func_unstructured(data.data(), 8193, pos.data(), a, b, k); });
  EXPECT_EQ(launch.grid.x, 2u);
  EXPECT_EQ(printed(), "allocating 32772 bytes\nnbPos8193\ngrid: 2 64 1\n16384\n");
  EXPECT_TRUE(sameBits(data[8192], data[0]));
  EXPECT_NE(data[8192].re, 0.0f);
}

TEST_F(LauncherTest, Grid17By9RowsTakes2By2Blocks) {
  std::vector<Complex> data(153);
  const emulation::Call launch =
      launchOf([&] { RectangularPiston_func(data.data(), 17, 3, 3, t, a, b, k); });
  EXPECT_EQ(launch.grid.x, 2u);
  EXPECT_EQ(launch.grid.y, 2u);
  EXPECT_EQ(launch.grid.z, 1u);
  EXPECT_EQ(launch.block.x, 128u);
}

TEST_F(LauncherTest, DividesRoundingUp) {
  EXPECT_EQ(iDivUp(0, 8), 0);
  EXPECT_EQ(iDivUp(8, 8), 1);
  EXPECT_EQ(iDivUp(9, 8), 2);
  EXPECT_EQ(iDivUp(65, 64), 2);
  EXPECT_EQ(iDivUp(2147483647, 16), 134217728);
}

TEST_F(LauncherTest, TheGridLaunchersPrintTheirTransform) {
  grid();
  EXPECT_EQ(printed(), " transform: 0.5 0 0 -1 0\n _device transform: 0.5 0 0 -1 0\n");
}

TEST_F(LauncherTest, TheOtherLaunchersPrintTheirAllocationOrNothing) {
  split();
  EXPECT_EQ(printed(), "allocating 48 bytes\n");
  structured();
  EXPECT_EQ(printed(), "allocating 48 bytes\n");
  twelveScalars();
  fromCentre();
  EXPECT_EQ(printed(), "");
}

TEST_F(LauncherTest, TheLaunchersAllocateWhatTheirTextsSay) {
  EXPECT_EQ(allocationsOf(grid), (std::vector<std::size_t>{96, 64}));
  EXPECT_EQ(allocationsOf(split), (std::vector<std::size_t>{48, 48, 64}));
  EXPECT_EQ(allocationsOf(structured), (std::vector<std::size_t>{96, 12, 8, 8}));
  EXPECT_EQ(allocationsOf(twelveScalars), (std::vector<std::size_t>{96}));
  EXPECT_EQ(allocationsOf(fromCentre), (std::vector<std::size_t>{96}));
}

TEST_F(LauncherTest, EmptyGridsAndListsFailInTheLaunch) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(failureOf([&] {
              RectangularPiston_func_unstructured(nullptr, 0, nullptr, a, b, k);
            }).condition,
            "invalid configuration argument");
  EXPECT_EQ(failureOf([&] { do_calculate(nullptr, 0, 1, 1, 1, 1, 1, a, b, k); }).condition,
            "invalid configuration argument");
  testing::internal::GetCapturedStderr();
}

TEST_F(LauncherTest, AGridOfMoreRowsThanADeviceLaunchesIsRefused) {
  std::vector<Complex> data(524281);
  testing::internal::CaptureStderr();
  EXPECT_EQ(failureOf([&] { do_calculate(data.data(), 1, 524281, 1, 1, 1, 1, a, b, k); }).condition,
            "invalid configuration argument");
  testing::internal::GetCapturedStderr();
}

TEST_F(LauncherTest, ResortInterleaves) {
  float data[] = {1, 2, -1, -2};  // r0 r1 i0 i1
  resort(data, 2);
  EXPECT_EQ(std::vector<float>(data, data + 4), (std::vector<float>{1, -1, 2, -2}));
}

}  // namespace
