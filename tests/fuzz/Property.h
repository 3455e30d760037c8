#pragma once

#include <string>

namespace fuzz {

/// Ends the process if a property does not hold, so that the fuzzer keeps the input.
void require(bool holds, const std::string& property);

/// Discards what the library prints. Violated properties are still reported.
void silence();

}  // namespace fuzz
