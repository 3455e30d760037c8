#pragma once

#include <mutex>
#include <ostream>

namespace pistonfield {

/// Whether calls write progress lines to standard output. Initially they do.
void showProgress(bool shown);
bool progressIsShown();

/// The stream for progress lines: standard output, or a stream that discards them.
std::ostream& progress();

/// The CPU evaluation locks this while it writes a progress line, because several threads may run
/// it.
std::mutex& progressMutex();

}  // namespace pistonfield
