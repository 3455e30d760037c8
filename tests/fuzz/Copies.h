#pragma once

#include <cstring>

namespace fuzz {

/// The value that the same bits represent in another type.
template <class To, class From>
To copied(const From& from) {
  static_assert(sizeof(To) == sizeof(From));
  To to;
  std::memcpy(&to, &from, sizeof to);
  return to;
}

}  // namespace fuzz
