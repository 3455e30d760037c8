#include "fuzz/Property.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

int told = STDERR_FILENO;

}  // namespace

// Makes allocations that exceed any machine's memory fail under sanitizers as on a machine, instead
// of ending the process.
extern "C" const char* __asan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=256";
}

namespace fuzz {

void require(bool holds, const std::string& property) {
  if (holds) return;
  dprintf(told, "does not hold: %s\n", property.c_str());
  std::abort();
}

void silence() {
  told = dup(STDERR_FILENO);  // libFuzzer may close the original
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDOUT_FILENO);
  close(nowhere);
}

}  // namespace fuzz
