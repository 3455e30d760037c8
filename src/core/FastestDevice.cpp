#include "core/FastestDevice.h"

#include <cuda_runtime.h>

#include <algorithm>
#include <cstdint>

#include "core/CudaCompatibility.h"
#include "core/Progress.h"

namespace pistonfield {
namespace {

constexpr int emulationMajor = 9999;

struct CoresOfCapability {
  int key;  // major·16 + minor
  int cores;
};

constexpr CoresOfCapability coresPerMultiprocessor[] = {{16, 8},  {17, 8},  {18, 8}, {19, 8},
                                                        {32, 32}, {33, 48}, {-1, -1}};

int lookUpCores(int major, int minor) {
  if (major == emulationMajor && minor == emulationMajor) return 1;
  const CoresOfCapability* row = coresPerMultiprocessor;
  while (row->key != -1 && row->key != major * 16 + minor) ++row;
  if (row->key == -1)
    progress() << "MapSMtoCores undefined SMversion " << major << "." << minor << "!" << std::endl;
  return row->cores;
}

int performance(const cudaDeviceProp& properties, int device) {
  const int cores = lookUpCores(properties.major, properties.minor);
  // Wraps as a 32-bit signed product does.
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(cores) *
                                   static_cast<std::uint32_t>(properties.multiProcessorCount) *
                                   static_cast<std::uint32_t>(clockRate(device)));
}

cudaDeviceProp propertiesOf(int device) {
  cudaDeviceProp properties{};
  cudaGetDeviceProperties(&properties, device);
  return properties;
}

}  // namespace

int fastestDevice() {
  int count = 0;
  cudaGetDeviceCount(&count);

  int newest = 0;
  for (int device = 0; device < count; ++device) {
    const int major = propertiesOf(device).major;
    if (0 < major && major < emulationMajor) newest = std::max(newest, major);
  }

  int best = 0;
  int bestPerformance = 0;
  for (int device = 0; device < count; ++device) {
    const cudaDeviceProp properties = propertiesOf(device);
    const int candidate = performance(properties, device);
    if (candidate <= bestPerformance) continue;
    if (newest > 2 && properties.major != newest) continue;
    bestPerformance = candidate;
    best = device;
  }
  return best;
}

}  // namespace pistonfield
