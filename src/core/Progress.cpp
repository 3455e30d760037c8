#include "core/Progress.h"

#include <iostream>
#include <mutex>

namespace pistonfield {
namespace {

bool isTold = true;

}  // namespace

void tellProgress(bool told) { isTold = told; }

bool progressIsTold() { return isTold; }

std::ostream& progress() {
  static std::ostream nowhere(nullptr);
  return isTold ? std::cout : nowhere;
}

void tellLine(const std::function<void(std::ostream&)>& write) {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  write(progress());
  progress() << std::endl;
}

}  // namespace pistonfield
