#pragma once

#include <mutex>
#include <ostream>

namespace pistonfield {

/// Whether calls tell on standard output what they do; at the start they do.
void tellProgress(bool told);
bool progressIsTold();

/// Where calls tell what they do: standard output, or a stream that drops it.
std::ostream& progress();

/// Locked while a line is written there by work that several threads may do at once.
std::mutex& progressMutex();

}  // namespace pistonfield
