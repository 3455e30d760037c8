#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "FastNearfield/Launchers.h"

using support::Failure;
using support::failureOf;

// Every step of every launcher: its order, its texts, its sizes, and what is said when it fails.

namespace {

struct Step {
  enum Kind { STAGE, CALL, LAUNCH, WAIT, PRINT } kind;
  std::string text;      // a stage's label, a call as its report shows it, a printed line
  std::string function;  // of the runtime
  std::size_t bytes = 0;
};

Step stage(const std::string& label) { return {Step::STAGE, label, "cudaGetLastError"}; }
Step print(const std::string& line) { return {Step::PRINT, line + "\n", ""}; }
Step allocate(std::size_t bytes, const std::string& text) {
  return {Step::CALL, text, "cudaMalloc", bytes};
}
Step copy(std::size_t bytes, const std::string& text) {
  return {Step::CALL, text, "cudaMemcpy", bytes};
}
Step release(const std::string& text) { return {Step::CALL, text, "cudaFree"}; }

const Step launchIt = {Step::LAUNCH, "", "cudaLaunchKernel"};
const Step waitForIt = {Step::WAIT, "cudaThreadSynchronize()", "cudaDeviceSynchronize"};
const Step allocateTransform = allocate(64, "cudaMalloc((void**)&d_transform, 16*sizeof(float))");
const Step copyTransform =
    copy(64, "cudaMemcpy( d_transform, transform, 16*sizeof(float), cudaMemcpyHostToDevice )");
const Step allocateTransform_d =
    allocate(128, "cudaMalloc((void**)&d_transform, 16*sizeof(double))");
const Step copyTransform_d =
    copy(128, "cudaMemcpy( d_transform, transform, 16*sizeof(double), cudaMemcpyHostToDevice )");

constexpr const char* single = "src/FastNearfield/RectangularPistonCuda";
constexpr const char* dual = "src/FastNearfield/RectangularPistonCuda.dp";

struct Launcher {
  std::string name;
  std::string file;
  launchers::Values (*call)(const launchers::Size&);
  dim3 grid;
  std::vector<Step> steps;
};

void PrintTo(const Launcher& launcher, std::ostream* out) { *out << launcher.name; }

// 153 points: 612 bytes of one float each, 1224 of one pair each.
const std::vector<Launcher> all = {
    {"RectangularPiston_func_unstructured",
     single,
     launchers::unstructured,
     dim3(1, 64),
     {stage("pre do_calculate_grid"), print("allocating 612 bytes"),
      allocate(1224, "cudaMalloc((void**)&d_arrayr, datasize*2)"),
      allocate(1836, "cudaMalloc((void**)&d_pos, nbPositions*3*sizeof(float))"),
      copy(1836,
           "cudaMemcpy(&d_pos[0], &pos[0], nbPositions*3*sizeof(float), cudaMemcpyHostToDevice)"),
      stage("pre RectangularPison_func_device"), print("nbPos153\ngrid: 1 64 1\n8192"), launchIt,
      waitForIt, stage("RectangularPiston_func_device"),
      copy(1224, "cudaMemcpy( &data[0], d_arrayr, datasize*2, cudaMemcpyDeviceToHost )"),
      release("cudaFree(d_pos)"), release("cudaFree(d_arrayr)")}},
    {"RectangularPiston_func",
     single,
     launchers::grid,
     dim3(2, 2),
     {stage("pre RectangularPiston_func"), allocate(1224, "cudaMalloc((void**)&d_array, datasize)"),
      print(" transform: 0.5 0 0 -1 0"), stage("pre RectangularPison_func_device"),
      print(" _device transform: 0.5 0 0 -1 0"), allocateTransform, copyTransform, launchIt,
      waitForIt, stage("RectangularPiston_func_device"), release("cudaFree(d_transform)"),
      copy(1224, "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )"),
      release("cudaFree(d_array)")}},
    {"RectangularPiston_func2",
     single,
     launchers::split,
     dim3(2, 2),
     {stage("pre do_calculate_grid"), print("allocating 612 bytes"),
      allocate(612, "cudaMalloc((void**)&d_arrayr, datasize)"),
      allocate(612, "cudaMalloc((void**)&d_arrayi, datasize)"),
      stage("pre RectangularPiston_func2_device"), allocateTransform, copyTransform, launchIt,
      waitForIt, stage("RectangularPiston_func2_device"), release("cudaFree(d_transform)"),
      copy(612, "cudaMemcpy( &datar[0], d_arrayr, datasize, cudaMemcpyDeviceToHost )"),
      copy(612, "cudaMemcpy( &datai[0], d_arrayi, datasize, cudaMemcpyDeviceToHost )"),
      release("cudaFree(d_arrayr)"), release("cudaFree(d_arrayi)")}},
    {"RectangularPiston_func_structured",
     single,
     launchers::structured,
     dim3(2, 2),
     {stage("pre do_calculate_grid"), print("allocating 612 bytes"),
      allocate(1224, "cudaMalloc((void**)&d_arrayr, datasize*2)"),
      allocate(68, "cudaMalloc((void**)&d_posx, sx * sizeof(float))"),
      allocate(12, "cudaMalloc((void**)&d_posy, sy * sizeof(float))"),
      allocate(12, "cudaMalloc((void**)&d_posz, sz * sizeof(float))"),
      copy(68, "cudaMemcpy(&d_posx[0], &posx[0], sx*sizeof(float), cudaMemcpyHostToDevice)"),
      copy(12, "cudaMemcpy(&d_posy[0], &posy[0], sy*sizeof(float), cudaMemcpyHostToDevice)"),
      copy(12, "cudaMemcpy(&d_posz[0], &posz[0], sz*sizeof(float), cudaMemcpyHostToDevice)"),
      stage("pre RectangularPison_func_device"), launchIt, waitForIt,
      stage("RectangularPiston_func_device"),
      copy(1224, "cudaMemcpy( &data[0], d_arrayr, datasize*2, cudaMemcpyDeviceToHost )"),
      release("cudaFree(d_posz)"), release("cudaFree(d_posy)"), release("cudaFree(d_posx)"),
      release("cudaFree(d_arrayr)")}},
    {"do_calculate_grid",
     single,
     launchers::twelveScalars,
     dim3(2, 2),
     {stage("pre do_calculate_grid"), allocate(1224, "cudaMalloc((void**)&d_array, datasize)"),
      launchIt, waitForIt, stage("calculate_grid"),
      copy(1224, "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )"),
      release("cudaFree(d_array)")}},
    {"do_calculate",
     single,
     launchers::fromCentre,
     dim3(2, 2),
     {stage("pre do_calculate"), allocate(1224, "cudaMalloc((void**)&d_array, datasize)"), launchIt,
      stage("calculate"),
      copy(1224, "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )"),
      release("cudaFree(d_array)")}},
    {"RectangularPiston_func_d",
     dual,
     launchers::grid_d,
     dim3(2, 2),
     {stage("pre do_calculate_grid"), allocate(2448, "cudaMalloc((void**)&d_array, datasize)"),
      allocateTransform_d, copyTransform_d, launchIt, waitForIt, stage("calculate_grid"),
      copy(2448, "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )"),
      release("cudaFree(d_array)"), release("cudaFree(d_transform)")}},
    {"RectangularPiston_func2_d",
     dual,
     launchers::split_d,
     dim3(2, 2),
     {stage("pre do_calculate_grid"), allocate(1224, "cudaMalloc((void**)&d_arrayr, datasize)"),
      allocate(1224, "cudaMalloc((void**)&d_arrayi, datasize)"), allocateTransform_d,
      copyTransform_d, launchIt, waitForIt, stage("calculate_grid"),
      copy(1224, "cudaMemcpy( &datar[0], d_arrayr, datasize, cudaMemcpyDeviceToHost )"),
      copy(1224, "cudaMemcpy( &datai[0], d_arrayi, datasize, cudaMemcpyDeviceToHost )"),
      release("cudaFree(d_arrayr)"), release("cudaFree(d_arrayi)"),
      release("cudaFree(d_transform)")}},
    {"do_calculate_grid_d",
     dual,
     launchers::twelveScalars_d,
     dim3(2, 2),
     {stage("pre do_calculate_grid"), allocate(2448, "cudaMalloc((void**)&d_array, datasize)"),
      launchIt, waitForIt, stage("calculate_grid"),
      copy(2448, "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )"),
      release("cudaFree(d_array)")}},
    {"do_calculate_d",
     dual,
     launchers::fromCentre_d,
     dim3(2, 2),
     {stage("pre do_calculate"), allocate(2448, "cudaMalloc((void**)&d_array, datasize)"), launchIt,
      stage("calculate"),
      copy(2448, "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )"),
      release("cudaFree(d_array)")}}};

class LauncherStepsTest : public launchers::Test, public testing::WithParamInterface<Launcher> {
 protected:
  static void call() { GetParam().call(launchers::small); }

  /// The calls of the runtime that the steps make, as text.
  static std::string expectedCalls(bool timed) {
    std::string calls;
    for (const Step& step : GetParam().steps)
      if (step.kind != Step::PRINT && (timed || step.kind != Step::WAIT))
        calls += step.function + " " + std::to_string(step.bytes) + "\n";
    return calls;
  }

  std::string callsMade() {
    std::string calls;
    for (const emulation::Call& call : device.calls())
      calls += std::string(call.function) + " " + std::to_string(call.bytes) + "\n";
    return calls;
  }
};

TEST_P(LauncherStepsTest, AreMadeInOrderAndWithTheirSizes) {
  for (const int timing : {0, 1}) {
    do_timing = timing;
    device.recordCalls();
    call();
    EXPECT_EQ(callsMade(), expectedCalls(timing != 0));
  }
}

TEST_P(LauncherStepsTest, LaunchTheirShape) {
  device.recordCalls();
  call();
  for (const emulation::Call& call : device.calls())
    if (std::string(call.function) == "cudaLaunchKernel") {
      EXPECT_EQ(call.grid.x, GetParam().grid.x);
      EXPECT_EQ(call.grid.y, GetParam().grid.y);
      EXPECT_EQ(call.grid.z, 1u);
      EXPECT_EQ(call.block.x, 128u);
      EXPECT_EQ(call.block.y, 1u);
      EXPECT_EQ(call.block.z, 1u);
    }
}

TEST_P(LauncherStepsTest, AreReportedByTheirTextsWhenTheyFail) {
  std::map<std::string, int> occurrence;
  std::string printedSoFar;
  std::set<int> lines;
  std::size_t reports = 0;
  for (const Step& step : GetParam().steps) {
    if (step.kind == Step::PRINT) printedSoFar += step.text;
    if (step.kind == Step::PRINT || step.kind == Step::LAUNCH) continue;
    startAfresh();
    do_timing = 1;
    device.failCall(step.function, ++occurrence[step.function], cudaErrorUnknown, false);
    testing::internal::CaptureStderr();
    const Failure failure = failureOf([&] { call(); });
    const std::string standardError = testing::internal::GetCapturedStderr();

    EXPECT_EQ(failure.file, GetParam().file);
    if (step.kind == Step::STAGE) {
      EXPECT_EQ(failure.condition, "unknown error") << step.text;
      EXPECT_EQ(standardError, "Cuda error: " + step.text + " in file '" + GetParam().file +
                                   "' in line " + std::to_string(failure.line) +
                                   " : unknown error.\n");
    } else {
      EXPECT_EQ(failure.condition, "Cuda error when calling " + step.text + ": unknown error");
      EXPECT_EQ(standardError, "");
    }
    EXPECT_EQ(printed(), printedSoFar) << step.text;
    // A failing cudaFree frees nothing; all else must be freed as the error unwinds.
    EXPECT_EQ(device.liveAllocations(), step.function == "cudaFree" ? 1u : 0u) << step.text;
    lines.insert(failure.line);
    ++reports;
  }
  EXPECT_EQ(lines.size(), reports);  // each check reports a line of its own
}

TEST_P(LauncherStepsTest, ShowAFailingLaunchAtTheStageAfterIt) {
  device.failCall("cudaLaunchKernel", 1, cudaErrorLaunchFailure, false);
  testing::internal::CaptureStderr();
  const Failure failure = failureOf([&] { call(); });
  EXPECT_EQ(failure.condition, "unspecified launch failure");
  std::string label;
  for (const Step& step : GetParam().steps)
    if (step.kind == Step::STAGE) label = step.text;
  EXPECT_EQ(testing::internal::GetCapturedStderr().find("Cuda error: " + label + " in file"), 0u);
}

TEST_P(LauncherStepsTest, AreAllMadeWhenTheHandlerReturns) {
  std::vector<Failure> failures;
  pistonfield::ErrorHandler::setErrorHandler(new support::ReturningHandler(failures));
  device.failCall("cudaMalloc", 1, cudaErrorMemoryAllocation, false);
  device.failCall("cudaLaunchKernel", 1, cudaErrorLaunchFailure, false);
  device.recordCalls();
  testing::internal::CaptureStderr();
  call();
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(callsMade(), expectedCalls(false));
  ASSERT_GE(failures.size(), 3u);
  EXPECT_NE(failures.front().condition.find(": out of memory"), std::string::npos);
  EXPECT_NE(failures.back().condition.find("cudaMemcpyDeviceToHost ): invalid argument"),
            std::string::npos);
  EXPECT_EQ(device.liveAllocations(), 0u);
}

TEST_P(LauncherStepsTest, LeaveNothingOnTheDevice) {
  call();
  EXPECT_EQ(device.liveAllocations(), 0u);
}

TEST_P(LauncherStepsTest, MeasureTheLaunchWhileTimingIsOn) {
  bool timed = false;
  for (const Step& step : GetParam().steps) timed = timed || step.kind == Step::WAIT;
  global_time = -1;
  call();
  EXPECT_EQ(global_time, -1);
  do_timing = 1;
  call();
  if (timed)
    EXPECT_GE(global_time, 0);
  else
    EXPECT_EQ(global_time, -1);
  const double last = global_time;
  do_timing = 0;
  call();
  EXPECT_EQ(global_time, last);
}

INSTANTIATE_TEST_SUITE_P(All, LauncherStepsTest, testing::ValuesIn(all),
                         [](const auto& launcher) { return launcher.param.name; });

}  // namespace
