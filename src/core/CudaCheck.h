#pragma once

#include <cuda_runtime.h>

#include <exception>

#include "core/ErrorHandler.h"

namespace pistonfield {

/// Clears the runtime's pending error when the error handler throws out of this object's scope. An
/// error that has been reported must not fail the next call as well.
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
/// runtime's error string. Returns the pending error.
cudaError_t stageCheck(const char* stage, SourceLocation location);

/// Returns whether `code` is success. If it is not, fails with "Cuda error when calling CALL:
/// ERROR". Users read `call`: it is a string, so that clang-format does not change it.
bool callCheck(cudaError_t code, const char* call, SourceLocation location);

}  // namespace pistonfield

/// The location of a check, for checks whose line users need not recognise: it changes with the
/// file. Checks whose line users know have a SourceLocation with a fixed number instead. The scope
/// must define `sourceFile`.
#define HERE \
  ::pistonfield::SourceLocation { sourceFile, __LINE__ }
