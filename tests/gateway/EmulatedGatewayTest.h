#pragma once

#include <cuda_runtime.h>

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

  emulation::TestControl& device;
};
