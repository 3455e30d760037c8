#include "core/Progress.h"

#include <iostream>

namespace pistonfield {
namespace {

bool isShown = true;

}  // namespace

void showProgress(bool shown) { isShown = shown; }

bool progressIsShown() { return isShown; }

std::ostream& progress() {
  static std::ostream nowhere(nullptr);
  return isShown ? std::cout : nowhere;
}

std::mutex& progressMutex() {
  static std::mutex mutex;
  return mutex;
}

}  // namespace pistonfield
