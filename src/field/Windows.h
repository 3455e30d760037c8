#pragma once

#include <optional>
#include <string>

namespace pistonfield {

/// A window of apodization (arrays.h), with its parameter.
class Window {
 public:
  /// Throws a FieldError, which calls the name `argument`, if there is no such window, and if the
  /// parameter is not in its range.
  Window(std::string name, std::optional<double> parameter, const char* argument = "name");

  /// From 0 to 1, for u from −1 to 1.
  double at(double u) const { return value_(u, parameter_); }

 private:
  double (*value_)(double u, double parameter);
  double parameter_;
};

/// exp(x) for x ≤ 0. The C library's exp of today needs a newer library than the modules do.
double exponential(double x);

}  // namespace pistonfield
