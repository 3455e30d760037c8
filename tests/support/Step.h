#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <string>
#include <vector>

namespace support {

/// A step of a piece of work as its users see it: a call of the runtime and the check of its
/// result, or a printed line.
struct Step {
  /// UNCHECKED: the result is ignored. CALL: a failure is reported with the call's text. STAGE: a
  /// pending error is reported, and the stage's label is written to standard error.
  enum Kind { UNCHECKED, CALL, STAGE, PRINT } kind;
  std::string function;     // of the runtime
  std::string text;         // of the report, or what is printed
  std::size_t bytes = 0;    // 0: any
  int line = 0;             // of the report; 0: any
  dim3 grid{0, 0, 0};       // of the launch; 0: any
  bool isTimed = false;     // only made while timing is on
  std::string file{};       // of the report
  std::size_t leftOut = 0;  // the number of calls skipped if this one fails
};

using Steps = std::vector<Step>;

inline Step unchecked(const char* function, dim3 grid = dim3(0, 0, 0)) {
  return {Step::UNCHECKED, function, "", 0, 0, grid};
}
inline Step call(const char* function, const char* text, int line = 0) {
  return {Step::CALL, function, text, 0, line};
}
inline Step stage(const std::string& label, int line = 0) {
  return {Step::STAGE, "cudaGetLastError", label, 0, line};
}
inline Step print(const std::string& line) { return {Step::PRINT, "", line + "\n"}; }
inline Step allocate(std::size_t bytes, const char* text) {
  return {Step::CALL, "cudaMalloc", text, bytes};
}
inline Step copy(std::size_t bytes, const char* text) {
  return {Step::CALL, "cudaMemcpy", text, bytes};
}
inline Step release(const char* text) { return {Step::CALL, "cudaFree", text}; }
inline Step timed(Step step) {
  step.isTimed = true;
  return step;
}

/// A piece of a list, which must end before the next piece is launched.
inline Step piece() {
  Step step = unchecked("cudaLaunchKernel");
  step.leftOut = 1;
  return step;
}

/// The steps, with `file` as the file of their reports.
inline Steps in(const char* file, Steps steps) {
  for (Step& step : steps) step.file = file;
  return steps;
}

inline Steps operator+(Steps first, const Steps& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

/// The steps on a device that works in the host's memory, without allocations and copies.
inline Steps inHostMemory(const Steps& steps) {
  Steps rest;
  for (const Step& step : steps)
    if (step.function != "cudaMalloc" && step.function != "cudaMemcpy" &&
        step.function != "cudaFree")
      rest.push_back(step);
  return rest;
}

/// Those of the steps that are calls of the runtime.
inline Steps callsOf(const Steps& steps, bool isTimed) {
  Steps calls;
  for (const Step& step : steps)
    if (step.kind != Step::PRINT && (isTimed || !step.isTimed)) calls.push_back(step);
  return calls;
}

}  // namespace support
