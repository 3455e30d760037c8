#pragma once

#include <functional>
#include <ostream>

namespace pistonfield {

/// Whether calls tell on standard output what they do; at the start they do.
void tellProgress(bool told);
bool progressIsTold();

/// Where calls tell what they do: standard output, or a stream that drops it.
std::ostream& progress();

/// Has `write` write one line of that, which stays whole where several threads compute.
void tellLine(const std::function<void(std::ostream&)>& write);

}  // namespace pistonfield
