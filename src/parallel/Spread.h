#pragma once

#include <cstdint>
#include <functional>

namespace parallel {

/// Calls body(first, last) for ranges that make up 0 … count, on every core that the process may
/// use, and returns when all have returned. The ranges are of `length` > 0, and up to eight times
/// as long while much is left, or only one core works, in whole multiples; the last one is what
/// remains. If one throws, hands out no more of them and throws the first exception.
void spread(std::uint64_t count, std::uint64_t length,
            const std::function<void(std::uint64_t first, std::uint64_t last)>& body);

}  // namespace parallel
