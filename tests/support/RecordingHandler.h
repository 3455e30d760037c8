#pragma once

#include <string>
#include <vector>

#include "core/ErrorHandler.h"
#include "core/ThrowingErrorHandler.h"

namespace support {

struct Failure {
  std::string condition;
  int line;
  std::string file;
};

/// Stores every failure in `failures` and returns, so that the code continues.
class ReturningHandler : public pistonfield::ErrorHandler {
 public:
  explicit ReturningHandler(std::vector<Failure>& failures) : failures_(failures) {}
  void fail(const char* condition, int line, const char* file) override {
    failures_.push_back({condition, line, file});
  }

 private:
  std::vector<Failure>& failures_;
};

/// The failure that ends `call`, or an empty one if it succeeds.
template <class Call>
Failure failureOf(Call call) {
  pistonfield::ErrorHandler::setErrorHandler(new pistonfield::ThrowingErrorHandler);
  try {
    call();
  } catch (const pistonfield::Error& error) {
    return {error.what(), error.line(), error.file()};
  }
  return {};
}

}  // namespace support
