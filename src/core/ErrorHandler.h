#pragma once

#include <memory>

namespace pistonfield {

/// Where a check stands: the path of its source file from the root of the sources, without
/// extension (for example "src/core/Vector"), and the line that a report shows.
struct SourceLocation {
  const char* file;
  int line;
};

/// The process-wide, replaceable receiver of failed conditions.
///
/// Code that finds a condition violated calls `ErrorHandler::getErrorHandler()->fail(...)`. No
/// handler of this project returns from `fail`: the default one ends the process, a
/// `ThrowingErrorHandler` throws. Where a handler of a program's own returns, the code goes on with
/// its next step, and what it computes is undefined.
///
/// Install a handler before other threads call the system: installing is not locked. `fail` is
/// called on the thread whose condition failed.
class ErrorHandler {
 public:
  ErrorHandler() = default;
  ErrorHandler(const ErrorHandler&) = delete;
  ErrorHandler& operator=(const ErrorHandler&) = delete;
  virtual ~ErrorHandler();

  /// Reports the failed `condition` (its source text, or a message) found at `line` of `file`.
  virtual void fail(const char* condition, int line, const char* file) = 0;

  /// The installed handler, or a static `DefaultErrorHandler` while there is none.
  static ErrorHandler* getErrorHandler();

  /// Deletes the installed handler and installs `handler`, taking ownership; a null pointer
  /// installs a new `DefaultErrorHandler`. Pass a fresh object: the installed one is deleted first.
  static void setErrorHandler(ErrorHandler* handler);

 private:
  static std::unique_ptr<ErrorHandler> theErrorHandler;
};

/// Writes the report to standard error and aborts the process.
class DefaultErrorHandler : public ErrorHandler {
 public:
  void fail(const char* condition, int line, const char* file) override;

  static DefaultErrorHandler theDefaultErrorHandler;
};

/// Hands a condition to the current handler.
void fail(const char* condition, SourceLocation location);

}  // namespace pistonfield
