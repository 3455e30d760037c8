#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace support {

/// For the SetUp of a test that finds no device. A machine may lack a GPU: the test is skipped. The
/// emulation device is everywhere, and one that does not start is a failure, thrown.
inline void skipWithoutDevice() {
#if defined(CUDART_VERSION)
  GTEST_SKIP() << "no CUDA device on this machine";
#else
  throw std::runtime_error("the emulation device does not start");
#endif
}

}  // namespace support
