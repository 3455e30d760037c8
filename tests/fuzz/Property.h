#pragma once

#include <string>

namespace fuzz {

/// Ends the process, for the fuzzer to keep the input, unless a property holds.
void require(bool holds, const std::string& property);

/// Sends what the system prints nowhere. Properties that do not hold are still told.
void silence();

}  // namespace fuzz
