#pragma once

#include <cstdio>
#include <cstdlib>

#include "core/ErrorHandler.h"

namespace pistonfield {

/// What a failed plain assertion does, in release builds too: it prints and aborts, past any
/// handler.
[[noreturn]] inline void failPlainAssertion(const char* condition, const char* function,
                                            SourceLocation location) {
  std::fprintf(stderr, "%s:%d: %s: Assertion `%s' failed.\n", location.file, location.line,
               function, condition);
  std::abort();
}

}  // namespace pistonfield
