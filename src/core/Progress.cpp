#include "core/Progress.h"

#include <iostream>

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

}  // namespace pistonfield
