#include "core/cudahelper.h"

#include <exception>
#include <iostream>

#include "core/CudaCheck.h"
#include "core/CudaCompatibility.h"
#include "core/DeviceUse.h"
#include "core/FastestDevice.h"
#include "core/RuleOwner.h"
#include "core/cuda_init.h"

namespace pistonfield {
namespace {

// A fixed line number: it is part of a message that users know.
constexpr SourceLocation releaseLocation{"src/core/cudahelper", 25};

/// The number of nested scopes of the thread that holds the device.
int scopes = 0;

DeviceUse enter() {
  const int device = fastestDevice();  // also in a nested scope, because it prints lines
  if (++scopes > 1) return {};
  forgetRules();  // what was loaded outside of a scope may be on another device
  return enterDevice(device);
}

}  // namespace

int CudaInterface::init() { return cuda_init(); }

int CudaInterface::sync() { return cuda_sync(); }

void CudaInterface::release(const DeviceUse& use) {
  forgetRules();
  callCheck(leaveDevice(use), "cudaThreadExit()", releaseLocation);
}

void CudaInterface::dumpDevices() {
  int count = 0;
  cudaGetDeviceCount(&count);
  for (int device = 0; device < count; ++device) {
    cudaDeviceProp properties{};
    cudaGetDeviceProperties(&properties, device);
    std::cout << "Device: " << device << " Processors " << properties.multiProcessorCount
              << " clockrate " << clockRate(device) << std::endl;
  }
  std::cout << "Total: " << count << " devices." << std::endl;
}

CudaDeviceThread::CudaDeviceThread(Entered /*tag*/)
    : unwinding_(std::uncaught_exceptions()), use_(enter()) {}

// Delegates to the constructor above, so that the destructor runs even if the start fails.
CudaDeviceThread::CudaDeviceThread() : CudaDeviceThread(Entered()) {
  CudaInterface::init();
  CudaInterface::sync();
}

CudaDeviceThread::~CudaDeviceThread() noexcept(false) {
  if (--scopes > 0) return;
  if (std::uncaught_exceptions() > unwinding_) {
    forgetRules();
    static_cast<void>(leaveDevice(use_));
  } else {
    CudaInterface::release(use_);
  }
}

}  // namespace pistonfield
