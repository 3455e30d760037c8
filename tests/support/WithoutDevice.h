#pragma once

namespace support {

/// For the SetUp of a test that finds no device. Without a GPU, the test is skipped. The emulation
/// device always exists, so if it does not start, this throws and the test fails.
void skipWithoutDevice();

}  // namespace support
