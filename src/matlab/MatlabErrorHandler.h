#pragma once

#include "core/ErrorHandler.h"

namespace pistonfield {

/// Ends the current call with the report as the host's error message.
class MatlabErrorHandler : public ErrorHandler {
 public:
  void fail(const char* condition, int line, const char* file) override;
};

}  // namespace pistonfield
