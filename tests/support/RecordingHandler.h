#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "core/ErrorHandler.h"

namespace support {

struct Failure {
  std::string condition;
  int line;
  std::string file;
};

/// Thrown by a handler that does not return, as the hosts' do.
class Failed : public std::runtime_error {
 public:
  explicit Failed(const Failure& failure)
      : std::runtime_error(failure.file + ":" + std::to_string(failure.line) + ": " +
                           failure.condition),
        failure_(failure) {}
  const Failure& failure() const { return failure_; }

 private:
  Failure failure_;
};

/// Throws every failure.
class ThrowingHandler : public pistonfield::ErrorHandler {
 public:
  void fail(const char* condition, int line, const char* file) override {
    throw Failed({condition, line, file});
  }
};

/// Keeps every failure in `failures` and returns, so that the code carries on.
class ReturningHandler : public pistonfield::ErrorHandler {
 public:
  explicit ReturningHandler(std::vector<Failure>& failures) : failures_(failures) {}
  void fail(const char* condition, int line, const char* file) override {
    failures_.push_back({condition, line, file});
  }

 private:
  std::vector<Failure>& failures_;
};

/// The failure that `call` ends with; an empty one if it ends without.
template <class Call>
Failure failureOf(Call call) {
  pistonfield::ErrorHandler::setErrorHandler(new ThrowingHandler);
  try {
    call();
  } catch (const Failed& failed) {
    return failed.failure();
  }
  return {};
}

}  // namespace support
