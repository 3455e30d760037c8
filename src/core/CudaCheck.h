#pragma once

#include <cuda_runtime.h>

#include <exception>

#include "core/ErrorHandler.h"

namespace pistonfield {

/// Clears the runtime's pending error when the error handler throws out of its scope: an error that
/// has been reported must not fail the next call as well.
class ReportedErrorIsCleared {
 public:
  ReportedErrorIsCleared() = default;
  ReportedErrorIsCleared(const ReportedErrorIsCleared&) = delete;
  ReportedErrorIsCleared& operator=(const ReportedErrorIsCleared&) = delete;
  ~ReportedErrorIsCleared() {
    if (std::uncaught_exceptions() > before_) cudaGetLastError();
  }

 private:
  const int before_ = std::uncaught_exceptions();
};

/// Reads and clears the runtime's pending error; if there is one, writes
/// "Cuda error: STAGE in file 'FILE' in line LINE : ERROR." to standard error and fails with the
/// runtime's error string. Returns what was pending.
cudaError_t stageCheck(const char* stage, SourceLocation location);

/// Whether `code` is success. If not, fails with "Cuda error when calling " + `call` + ": " + error
/// string. `call` is what users read, so it is given as a text that no formatter can change.
bool callCheck(cudaError_t code, const char* call, SourceLocation location);

}  // namespace pistonfield

/// The place of a check in a file that defines `sourceFile`.
#define HERE \
  ::pistonfield::SourceLocation { sourceFile, __LINE__ }
