#pragma once

#include <cstdint>
#include <functional>

namespace pistonfield::parallel {

/// Calls body(first, last) for ranges that together cover [0, count), on all cores that the process
/// may use, and returns when all calls have returned. A range has `length` > 0 elements, or up to
/// eight times as many while much work is left or only one core works; the last range is the
/// remainder. If a call throws, starts no more calls and rethrows the first exception.
void spread(std::uint64_t count, std::uint64_t length,
            const std::function<void(std::uint64_t first, std::uint64_t last)>& body);

}  // namespace pistonfield::parallel
