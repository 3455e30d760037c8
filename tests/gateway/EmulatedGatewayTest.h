#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <ostream>
#include <vector>

#include "emulation/TestControl.h"
#include "gateway/GatewayTest.h"

/// The memory that the device works in: its own, like a GPU, or the host's, as for users of the
/// emulation device.
enum class Memory { SEPARATE, HOSTS };

inline void PrintTo(Memory memory, std::ostream* out) {
  *out << (memory == Memory::SEPARATE ? "SeparateMemory" : "HostMemory");
}

/// A test that uses the module's own test control to make the device fail, give false answers or
/// record calls.
class EmulatedGatewayTest : public GatewayTest {
 protected:
  EmulatedGatewayTest()
      : device(*reinterpret_cast<decltype(&emulationTestControl)>(
            module.symbol("emulationTestControl"))()) {
    startAfresh();
  }
  void TearDown() override { device.restore(); }

  /// Forgets all faults.
  void startAfresh(Memory memory = Memory::SEPARATE) {
    device.restore();
    if (memory == Memory::SEPARATE) device.separateMemory();
  }

  /// Enough points for the emulation device to start threads.
  static mxArray pointsForThreads() {
    const std::size_t count = 10000;
    std::vector<double> points;
    for (std::size_t i = 0; i < count; ++i)
      points.insert(points.end(), {1e-6 * static_cast<double>(i), 0.001, 0.02});
    return host::matrix(3, count, points);
  }

  pistonfield::emulation::TestControl& device;
};

/// The same, once for each kind of memory, with no faults at the start.
class InEitherMemory : public EmulatedGatewayTest, public testing::WithParamInterface<Memory> {
 protected:
  InEitherMemory() { startAfresh(GetParam()); }
};

#define INSTANTIATE_IN_EITHER_MEMORY(Test)                                             \
  INSTANTIATE_TEST_SUITE_P(In, Test, testing::Values(Memory::SEPARATE, Memory::HOSTS), \
                           testing::PrintToStringParamName())
