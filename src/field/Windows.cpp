#include "field/Windows.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "field/field.h"

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846;

double squared(double x) { return x * x; }

/// A window, whose parameter is from 0 to `most`; if that is 0, it has none.
struct Kind {
  const char* name;
  double (*value)(double u, double parameter);
  double most = 0, standard = 0;
};

double rectangular(double, double) { return 1; }

double hann(double u, double) { return squared(std::cos(pi * u / 2)); }

double hamming(double u, double) { return 0.54 + 0.46 * std::cos(pi * u); }

double tukey(double u, double fraction) {
  const double v = std::fabs(u) - (1 - fraction);
  return v > 0 ? squared(std::cos(pi / 2 * v / fraction)) : 1;  // v ≤ 0 if the fraction is 0
}

double gauss(double u, double ratio) { return exponential(-squared(ratio * u) / 2); }

constexpr std::array<Kind, 5> kinds = {{{"rectangular", rectangular},
                                        {"hann", hann},
                                        {"hamming", hamming},
                                        {"tukey", tukey, 1, 0.5},
                                        {"gauss", gauss, 10, 2.5}}};

const Kind& kindOf(std::string name, const char* argument) {
  for (char& letter : name)  // in every locale
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  const auto* const found =
      std::find_if(kinds.begin(), kinds.end(), [&](const Kind& kind) { return name == kind.name; });
  if (found == kinds.end())
    throw FieldError(std::string(argument) +
                     " must be 'rectangular', 'hann', 'hamming', 'tukey' or 'gauss'.");
  return *found;
}

double parameterOf(const Kind& kind, std::optional<double> parameter) {
  if (!parameter) return kind.standard;
  if (kind.most == 0)
    throw FieldError("parameter must be omitted: only 'tukey' and 'gauss' have one.");
  if (!std::isfinite(*parameter)) throw FieldError("parameter must be a finite real number.");
  if (*parameter < 0 || *parameter > kind.most)
    throw FieldError("parameter must be from 0 to " + std::to_string(static_cast<int>(kind.most)) +
                     ".");
  return *parameter;
}

}  // namespace

double exponential(double x) { return 1 / (1 + std::expm1(-x)); }

Window::Window(std::string name, std::optional<double> parameter, const char* argument) {
  const Kind& kind = kindOf(std::move(name), argument);
  value_ = kind.value;
  parameter_ = parameterOf(kind, parameter);
}

}  // namespace pistonfield
