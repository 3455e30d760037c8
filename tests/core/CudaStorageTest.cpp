#include "core/CudaStorage.h"

#include <gtest/gtest.h>

#include "support/DeviceTest.h"

using pistonfield::CudaStorage;

namespace {

class CudaStorageTest : public support::DeviceTest {};

TEST_F(CudaStorageTest, TellsTypeSizeAndTheSideOfItsType) {
  CudaStorage floats(CudaStorage::DT_FLOAT, 6);
  EXPECT_EQ(floats.getType(), CudaStorage::DT_FLOAT);
  EXPECT_EQ(floats.getSize(), 6u);
  EXPECT_NE(floats.getFloatData(), nullptr);
  EXPECT_EQ(floats.getDoubleData(), nullptr);
  EXPECT_NE(floats.getDeviceData(), nullptr);

  CudaStorage doubles(CudaStorage::DT_DOUBLE, 2);
  EXPECT_EQ(doubles.getType(), CudaStorage::DT_DOUBLE);
  EXPECT_EQ(doubles.getFloatData(), nullptr);
  EXPECT_NE(doubles.getDoubleData(), nullptr);
}

TEST_F(CudaStorageTest, CopiesBetweenHostAndDevice) {
  CudaStorage storage(CudaStorage::DT_DOUBLE, 3);
  for (int i = 0; i < 3; ++i) storage.getDoubleData()[i] = i + 0.5;
  storage.toDevice();
  for (int i = 0; i < 3; ++i) storage.getDoubleData()[i] = -1;
  storage.toHost();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(storage.getDoubleData()[i], i + 0.5);
}

#if !defined(CUDART_VERSION)
class EmulatedStorageTest : public support::EmulationTest {};

TEST_F(EmulatedStorageTest, StartsAtZeroInMemoryThatIsNot) {
  device.poisonFreshMemory();
  CudaStorage storage(CudaStorage::DT_DOUBLE, 4);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(storage.getDoubleData()[i], 0.0);
    storage.getDoubleData()[i] = 1;
  }
  storage.toHost();
  for (int i = 0; i < 4; ++i) EXPECT_EQ(storage.getDoubleData()[i], 0.0);
}
#endif

}  // namespace
