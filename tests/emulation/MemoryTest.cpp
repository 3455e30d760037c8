#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "core/CudaCompatibility.h"
#include "support/DeviceTest.h"

namespace {

float table[4];

class EmulatedMemoryTest : public support::EmulationTest {
 protected:
  static void* allocate(std::size_t size) {
    void* memory = nullptr;
    EXPECT_EQ(cudaMalloc(&memory, size), cudaSuccess);
    return memory;
  }
};

TEST_F(EmulatedMemoryTest, AllocationsAreAlignedAndCounted) {
  void* const memory = allocate(3);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % 256, 0u);
  EXPECT_EQ(device.liveAllocations(), 1u);
  EXPECT_EQ(cudaFree(memory), cudaSuccess);
  EXPECT_EQ(device.liveAllocations(), 0u);
}

TEST_F(EmulatedMemoryTest, NothingIsAllocatedForNoBytes) {
  EXPECT_EQ(allocate(0), nullptr);
  EXPECT_EQ(device.liveAllocations(), 0u);
  EXPECT_EQ(cudaFree(nullptr), cudaSuccess);
}

TEST_F(EmulatedMemoryTest, TooMuchMemoryIsRefused) {
  void* memory = &table;
  for (const std::size_t size :
       {std::numeric_limits<std::size_t>::max() / 2, std::numeric_limits<std::size_t>::max() - 7}) {
    EXPECT_EQ(cudaMalloc(&memory, size), cudaErrorMemoryAllocation);
    EXPECT_EQ(memory, nullptr);
  }
  EXPECT_EQ(cudaGetLastError(), cudaErrorMemoryAllocation);
  EXPECT_EQ(cudaGetLastError(), cudaSuccess);
}

TEST_F(EmulatedMemoryTest, OnlyWhatWasAllocatedCanBeFreed) {
  char* const memory = static_cast<char*>(allocate(16));
  EXPECT_EQ(cudaFree(memory + 1), cudaErrorInvalidValue);
  EXPECT_EQ(cudaFree(&table), cudaErrorInvalidValue);
  EXPECT_EQ(cudaFree(memory), cudaSuccess);
  EXPECT_EQ(cudaFree(memory), cudaErrorInvalidValue);
}

TEST_F(EmulatedMemoryTest, CopiesMustStayInsideAnAllocation) {
  char* const memory = static_cast<char*>(allocate(16));
  char host[32] = "0123456789abcdef";
  char back[32] = {};
  EXPECT_EQ(cudaMemcpy(memory, host, 16, cudaMemcpyHostToDevice), cudaSuccess);
  EXPECT_EQ(cudaMemcpy(back, memory + 4, 12, cudaMemcpyDeviceToHost), cudaSuccess);
  EXPECT_STREQ(back, "456789abcdef");
  EXPECT_EQ(cudaMemcpy(memory, host, 17, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
  EXPECT_EQ(cudaMemcpy(memory + 4, host, 13, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
  EXPECT_EQ(cudaMemcpy(back, host, 4, cudaMemcpyDeviceToHost), cudaErrorInvalidValue);
  EXPECT_EQ(cudaMemcpy(nullptr, host, 4, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
  EXPECT_EQ(cudaMemcpy(memory, nullptr, 4, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
  EXPECT_EQ(cudaMemcpy(nullptr, nullptr, 0, cudaMemcpyHostToDevice), cudaSuccess);
  EXPECT_EQ(cudaMemcpy(memory, host, 4, static_cast<cudaMemcpyKind>(3)),
            cudaErrorInvalidMemcpyDirection);
}

TEST_F(EmulatedMemoryTest, CopiesToASymbolMustFitIt) {
  const float values[] = {1, 2, 3, 4, 5};
  EXPECT_EQ(cudaMemcpyToSymbol(table, values, 16), cudaSuccess);
  EXPECT_EQ(table[3], 4.0f);
  EXPECT_EQ(cudaMemcpyToSymbol(table, values, 4, 8), cudaSuccess);
  EXPECT_EQ(table[2], 1.0f);
  EXPECT_EQ(cudaMemcpyToSymbol(table, values, 20), cudaErrorInvalidValue);
  EXPECT_EQ(cudaMemcpyToSymbol(table, nullptr, 4), cudaErrorInvalidValue);
  EXPECT_EQ(cudaMemcpyToSymbol(table, values, 8, 12), cudaErrorInvalidValue);
  EXPECT_EQ(cudaMemcpyToSymbol(table, values, 4, 0, cudaMemcpyDeviceToHost),
            cudaErrorInvalidMemcpyDirection);
}

TEST_F(EmulatedMemoryTest, ResetFreesMemoryAndForgetsSymbols) {
  allocate(16);
  const float value = 7;
  cudaMemcpyToSymbol(table, &value, 4);
  EXPECT_EQ(cudaDeviceReset(), cudaSuccess);
  EXPECT_EQ(device.liveAllocations(), 0u);
  EXPECT_EQ(table[0], 0.0f);
}

TEST_F(EmulatedMemoryTest, FreshMemoryCanBePoisoned) {
  device.poisonFreshMemory();
  const auto* const bytes = static_cast<unsigned char*>(allocate(64));
  for (int i = 0; i < 64; ++i) EXPECT_EQ(bytes[i], 0xFF);
}

TEST_F(EmulatedMemoryTest, WithoutADeviceEveryCallSaysSo) {
  device.pretendDevices({});
  void* memory = nullptr;
  EXPECT_EQ(cudaMalloc(&memory, 8), cudaErrorNoDevice);
  EXPECT_EQ(cudaSetDevice(0), cudaErrorNoDevice);
  int current = -7;
  EXPECT_EQ(cudaGetDevice(&current), cudaErrorNoDevice);
  EXPECT_EQ(current, -7);
  EXPECT_EQ(cudaDeviceSynchronize(), cudaErrorNoDevice);
  EXPECT_EQ(cudaDeviceReset(), cudaErrorNoDevice);
  cudaDeviceProp properties;
  EXPECT_EQ(cudaGetDeviceProperties(&properties, 0), cudaErrorNoDevice);
  EXPECT_STREQ(cudaGetErrorString(cudaErrorNoDevice), "no CUDA-capable device is detected");
}

TEST_F(EmulatedMemoryTest, TheCurrentDeviceIsTheOneThatWasSet) {
  device.pretendDevices(std::vector<pistonfield::emulation::Device>(2));
  int current = -7;
  EXPECT_EQ(cudaGetDevice(&current), cudaSuccess);
  EXPECT_EQ(current, 0);
  EXPECT_EQ(cudaSetDevice(1), cudaSuccess);
  EXPECT_EQ(cudaSetDevice(2), cudaErrorInvalidDevice);
  EXPECT_EQ(cudaGetDevice(&current), cudaSuccess);
  EXPECT_EQ(current, 1);
  EXPECT_EQ(cudaGetDevice(nullptr), cudaErrorInvalidValue);
  device.failCall("cudaGetDevice", 1, cudaErrorUnknown, false);
  EXPECT_EQ(cudaGetDevice(&current), cudaErrorUnknown);
}

TEST_F(EmulatedMemoryTest, ReportsOneEmulationDevice) {
  int count = 0;
  EXPECT_EQ(cudaGetDeviceCount(&count), cudaSuccess);
  EXPECT_EQ(count, 1);
  cudaDeviceProp properties;
  EXPECT_EQ(cudaGetDeviceProperties(&properties, 0), cudaSuccess);
  EXPECT_EQ(properties.major, 9999);
  EXPECT_EQ(properties.minor, 9999);
  EXPECT_GE(properties.multiProcessorCount, 1);
  EXPECT_EQ(cudaGetDeviceProperties(&properties, 1), cudaErrorInvalidDevice);
  EXPECT_GT(pistonfield::clockRate(0), 0);
}

}  // namespace
