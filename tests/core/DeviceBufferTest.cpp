#include "core/DeviceBuffer.h"

#include <array>
#include <limits>

#include "support/DeviceTest.h"

using pistonfield::DeviceBuffer;

// Memory of the device's own is seen in EveryCallTest: that it is copied to and from, and freed.

namespace {

class DeviceBufferTest : public support::EmulationTest {
 protected:
  std::array<float, 4> array{1, 2, 3, 4};
  DeviceBuffer<float> buffer;
};

TEST_F(DeviceBufferTest, IsTheArrayWhereTheDeviceWorksInTheHostsMemory) {
  device.restore();
  device.recordCalls();
  EXPECT_EQ(buffer.allocate(array.data(), sizeof array), cudaSuccess);
  EXPECT_EQ(buffer.get(), array.data());
  EXPECT_EQ(buffer.upload(), cudaSuccess);
  buffer.get()[2] = 7;
  EXPECT_EQ(buffer.download(), cudaSuccess);
  EXPECT_EQ(array, (std::array<float, 4>{1, 2, 7, 4}));
  EXPECT_EQ(buffer.free(), cudaSuccess);
  EXPECT_EQ(device.calls().size(), 0u);
}

TEST_F(DeviceBufferTest, IsMemoryOfItsOwnWhereItsArrayOverlapsTheResults) {
  device.restore();
  EXPECT_EQ(buffer.allocate(&array[1], 2 * sizeof(float)), cudaSuccess);
  const auto isOverlap = [&](std::size_t first, std::size_t count) {
    DeviceBuffer<float> input;
    EXPECT_EQ(input.allocate(&array[first], count * sizeof(float), buffer), cudaSuccess);
    EXPECT_EQ(input.upload(), cudaSuccess);
    EXPECT_EQ(*input.get(), array[first]);
    return input.get() != &array[first];
  };
  EXPECT_FALSE(isOverlap(0, 1));
  EXPECT_TRUE(isOverlap(0, 2));
  EXPECT_TRUE(isOverlap(0, 4));
  EXPECT_TRUE(isOverlap(1, 2));
  EXPECT_TRUE(isOverlap(2, 2));
  EXPECT_FALSE(isOverlap(3, 1));
}

TEST_F(DeviceBufferTest, OfANegativeSizeIsRefusedInEitherMemory) {
  constexpr std::size_t bytes = std::numeric_limits<std::size_t>::max() - 7;
  EXPECT_EQ(buffer.allocate(array.data(), bytes), cudaErrorMemoryAllocation);
  device.restore();
  EXPECT_EQ(buffer.allocate(array.data(), bytes), cudaErrorMemoryAllocation);
  EXPECT_EQ(buffer.get(), nullptr);
}

TEST_F(DeviceBufferTest, ANullArrayIsInvalidInTheHostsMemory) {
  device.restore();
  EXPECT_EQ(buffer.allocate(nullptr, sizeof(float)), cudaErrorInvalidValue);
  EXPECT_EQ(buffer.get(), nullptr);
}

}  // namespace
