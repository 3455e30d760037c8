#pragma once

namespace support {

/// For the SetUp of a test that finds no device. A machine may lack a GPU: the test is skipped. The
/// emulation device is everywhere, and one that does not start is a failure, thrown.
void skipWithoutDevice();

}  // namespace support
