#pragma once

#include <cstdint>

namespace limit {

/// Evaluates only the integrand, in the same form as the kernels, and returns the number of
/// evaluations. If `ahead` is set, the roots and quotients of the next values are started before
/// the current ones are used, as in the kernels; otherwise value by value. On the emulation device
/// it runs on the calling thread with the kernels' instruction set.
std::int64_t integrandOnly(bool ahead);

}  // namespace limit
