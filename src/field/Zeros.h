#pragma once

#include <complex>
#include <cstddef>
#include <vector>

namespace pistonfield {

/// Zeros, for numbers that are written once: on Linux many of them are in large pages, which the
/// system provides in a third of the time.
template <class T>
std::vector<T> zeros(std::size_t count);

}  // namespace pistonfield
