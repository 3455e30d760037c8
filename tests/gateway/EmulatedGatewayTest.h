#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <vector>

#include "emulation/TestControl.h"
#include "gateway/GatewayTest.h"

/// A test that makes the device below the gateway fail, lie or keep a record, through the module's
/// own test control.
class EmulatedGatewayTest : public GatewayTest {
 protected:
  EmulatedGatewayTest()
      : device(*reinterpret_cast<decltype(&emulationTestControl)>(
            module.symbol("emulationTestControl"))()) {}
  void TearDown() override { device.restore(); }

  /// Points enough for the emulation device to take threads to its help.
  static mxArray pointsForThreads() {
    const std::size_t count = 10000;
    std::vector<double> points;
    for (std::size_t i = 0; i < count; ++i)
      points.insert(points.end(), {1e-6 * static_cast<double>(i), 0.001, 0.02});
    return host::matrix(3, count, points);
  }

  emulation::TestControl& device;
};
