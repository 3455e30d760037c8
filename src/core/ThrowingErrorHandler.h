#pragma once

#include <stdexcept>
#include <string>

#include "core/ErrorHandler.h"

namespace pistonfield {

/// A failed condition as an exception. `what()` is the condition: its source text, or a message.
class Error : public std::runtime_error {
 public:
  Error(const char* condition, int line, const char* file)
      : std::runtime_error(condition), line_(line), file_(file) {}

  /// Where the condition was found: the path below the root of the sources, without extension, and
  /// the line.
  const std::string& file() const { return file_; }
  int line() const { return line_; }

 private:
  int line_;
  std::string file_;
};

/// Throws an `Error` where the default handler ends the process. A program installs it once, before
/// it computes:
///
///     ErrorHandler::setErrorHandler(new ThrowingErrorHandler);
class ThrowingErrorHandler : public ErrorHandler {
 public:
  [[noreturn]] void fail(const char* condition, int line, const char* file) override {
    throw Error(condition, line, file);
  }
};

}  // namespace pistonfield
