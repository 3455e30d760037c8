#pragma once

#include <memory>

namespace pistonfield {

/// The location of a check: the path of its source file without extension ("src/core/Vector", say)
/// and the line that the report shows.
struct SourceLocation {
  const char* file;
  int line;
};

/// The process-wide, replaceable receiver of failed conditions.
///
/// Code that finds a violated condition calls `ErrorHandler::getErrorHandler()->fail(...)`. The
/// handlers of this library do not return from `fail`: `DefaultErrorHandler` ends the process,
/// `ThrowingErrorHandler` throws. If a handler of your own returns, the code continues with its
/// next step and its results are undefined.
///
/// Install a handler before other threads use the library: installing is not thread-safe. `fail` is
/// called on the thread whose condition failed.
class ErrorHandler {
 public:
  ErrorHandler() = default;
  ErrorHandler(const ErrorHandler&) = delete;
  ErrorHandler& operator=(const ErrorHandler&) = delete;
  virtual ~ErrorHandler();

  /// Reports the failed `condition` (its source text or a message) at `line` of `file`.
  virtual void fail(const char* condition, int line, const char* file) = 0;

  /// The installed handler, or a static `DefaultErrorHandler` if none is installed.
  static ErrorHandler* getErrorHandler();

  /// Deletes the installed handler, installs `handler` and owns it from then on. A null pointer
  /// installs a new `DefaultErrorHandler`. Do not pass the installed handler: it is deleted first.
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

/// Passes a condition to the current handler.
void fail(const char* condition, SourceLocation location);

}  // namespace pistonfield
