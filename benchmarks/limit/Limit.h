#pragma once

#include <cstdint>

namespace limit {

/// Evaluates nothing but the integrand, in the same form as the kernels, and returns how often:
/// value by value, or with the roots and quotients of the next values on their way, as the kernels
/// do it. On the emulation device on the calling thread, with the instruction set that kernels use
/// there.
std::int64_t integrandOnly(bool ahead);

}  // namespace limit
