#pragma once

#include <cstdio>
#include <cstdlib>

#include "core/ErrorHandler.h"

namespace pistonfield {

/// Fails a plain assertion: prints the condition and aborts without calling the error handler, in
/// release builds too.
[[noreturn]] inline void failPlainAssertion(const char* condition, const char* function,
                                            SourceLocation location) {
  std::fprintf(stderr, "%s:%d: %s: Assertion `%s' failed.\n", location.file, location.line,
               function, condition);
  std::abort();
}

}  // namespace pistonfield
