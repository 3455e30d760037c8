#pragma once

#include <mutex>
#include <ostream>

namespace pistonfield {

/// Whether calls tell on standard output what they do; at the start they do.
void tellProgress(bool told);
bool progressIsTold();

/// Where calls tell what they do: standard output, or a stream that drops it.
std::ostream& progress();

/// Locked by the evaluation on the CPU while it writes a line there: several threads may evaluate.
std::mutex& progressMutex();

}  // namespace pistonfield
