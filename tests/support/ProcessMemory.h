#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <fstream>
#include <string>

namespace support {

inline std::size_t addressSpaceInUse() {
  std::size_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// The resident memory of this process in bytes.
inline std::size_t residentMemory() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line))
    if (line.rfind("VmRSS:", 0) == 0) return std::stoul(line.substr(6)) << 10;
  ADD_FAILURE() << "this machine does not tell";
  return 0;
}

/// Limits the address space of the process to `bytes` more than it uses now.
class AddressSpaceLimit {
 public:
  explicit AddressSpaceLimit(std::size_t bytes) {
    EXPECT_EQ(getrlimit(RLIMIT_AS, &before_), 0);
    rlimit limited = before_;
    limited.rlim_cur = addressSpaceInUse() + bytes;
    EXPECT_EQ(setrlimit(RLIMIT_AS, &limited), 0);
  }
  AddressSpaceLimit(const AddressSpaceLimit&) = delete;
  AddressSpaceLimit& operator=(const AddressSpaceLimit&) = delete;
  ~AddressSpaceLimit() { setrlimit(RLIMIT_AS, &before_); }

 private:
  rlimit before_{};
};

/// Sanitizers reserve terabytes of address space and keep freed memory.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool memoryIsOnlyOurs = false;
#else
constexpr bool memoryIsOnlyOurs = true;
#endif

}  // namespace support
