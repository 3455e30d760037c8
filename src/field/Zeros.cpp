#include "field/Zeros.h"

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

#include <cstdint>

namespace pistonfield {
namespace {

/// Asks for large pages in memory that has not been touched. This is a hint, which may be ignored.
void adviseLargePages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t bytes) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  constexpr std::size_t least = std::size_t{8} << 20;  // some large pages
  const long page = sysconf(_SC_PAGESIZE);
  if (bytes < least || page <= 0) return;
  const auto size = static_cast<std::size_t>(page),
             beyond = reinterpret_cast<std::uintptr_t>(memory) % size,
             skipped = beyond == 0 ? 0 : size - beyond;
  madvise(static_cast<char*>(memory) + skipped, (bytes - skipped) / size * size, MADV_HUGEPAGE);
#endif
}

}  // namespace

template <class T>
std::vector<T> zeros(std::size_t count) {
  std::vector<T> numbers;
  numbers.reserve(count);
  adviseLargePages(numbers.data(), count * sizeof(T));
  numbers.resize(count);
  return numbers;
}

template std::vector<double> zeros(std::size_t count);
template std::vector<std::complex<double>> zeros(std::size_t count);

}  // namespace pistonfield
