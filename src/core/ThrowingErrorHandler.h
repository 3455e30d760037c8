#pragma once

#include <stdexcept>
#include <string>

#include "ErrorHandler.h"

namespace pistonfield {

/// A failed condition as an exception. `what()` is the condition: its source text, or a message.
class Error : public std::runtime_error {
 public:
  Error(const char* condition, int line, const char* file)
      : std::runtime_error(condition), line_(line), file_(file) {}

  /// The source file that reported the condition, without extension, and the line.
  const std::string& file() const { return file_; }
  int line() const { return line_; }

 private:
  int line_;
  std::string file_;
};

/// Throws an `Error` instead of ending the process. Install it once, before the first computation:
///
///     ErrorHandler::setErrorHandler(new ThrowingErrorHandler);
class ThrowingErrorHandler : public ErrorHandler {
 public:
  [[noreturn]] void fail(const char* condition, int line, const char* file) override {
    throw Error(condition, line, file);
  }
};

}  // namespace pistonfield
