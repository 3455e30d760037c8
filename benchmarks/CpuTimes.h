#pragma once

#include <complex>
#include <functional>
#include <vector>

#include "field/field.h"

// What benchmarks of fields share.

/// The least CPU seconds of each task, which run in turns.
std::vector<double> secondsOf(const std::vector<std::function<void()>>& tasks);

double peakOf(const std::vector<std::complex<double>>& pressures);

pistonfield::FieldOptions within(double tolerance);

void printProcessor();
