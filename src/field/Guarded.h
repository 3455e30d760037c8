#pragma once

#include <algorithm>
#include <exception>
#include <new>
#include <stdexcept>

#include "field/field.h"

namespace pistonfield {

/// Returns what compute(options) returns, with options whose progress never falls. Too little
/// memory becomes a FieldError, but an exception of the caller's own function passes through.
/// Options are of any type with a function `progress`.
template <class Options, class Compute>
auto guarded(const Options& options, const Compute& compute) {
  struct Stopped {};
  std::exception_ptr callers;
  double done = 0;
  Options copy = options;
  copy.progress = [&](double fraction) {
    done = std::max(done, fraction);  // some work may have to be done another way
    try {
      if (options.progress) options.progress(done);
    } catch (...) {
      callers = std::current_exception();
      throw Stopped();
    }
  };
  try {
    return compute(copy);
  } catch (const Stopped&) {
    std::rethrow_exception(callers);
  } catch (const std::bad_alloc&) {
    throw FieldError("Not enough memory for the pressures. Compute fewer points at once.");
  } catch (const std::length_error&) {
    throw FieldError("Not enough memory for the pressures. Compute fewer points at once.");
  }
}

}  // namespace pistonfield
