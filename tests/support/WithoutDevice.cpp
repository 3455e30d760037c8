#include "support/WithoutDevice.h"

#include <gtest/gtest.h>

#include <stdexcept>

void support::skipWithoutDevice() {
#if PISTONFIELD_USE_CUDA
  GTEST_SKIP() << "no CUDA device on this machine";
#else
  throw std::runtime_error("the emulation device does not start");
#endif
}
