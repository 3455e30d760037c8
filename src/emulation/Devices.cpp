#include "emulation/Call.h"

namespace pistonfield::emulation::runtime {
namespace {

const Device* find(const State& state, int device) {
  const auto index = static_cast<std::size_t>(device);
  return device >= 0 && index < state.devices.size() ? &state.devices[index] : nullptr;
}

}  // namespace

cudaError_t cudaGetDeviceCount(int* count) {
  return perform({"cudaGetDeviceCount"}, [&](State& state) {
    *count = static_cast<int>(state.devices.size());
    return *count > 0 ? cudaSuccess : cudaErrorNoDevice;
  });
}

cudaError_t cudaGetDeviceProperties(cudaDeviceProp* properties, int device) {
  return performOnDevice({"cudaGetDeviceProperties"}, [&](State& state) {
    const Device* const found = find(state, device);
    if (!found) return cudaErrorInvalidDevice;
    *properties = found->properties;
    return cudaSuccess;
  });
}

cudaError_t cudaDeviceGetAttribute(int* value, cudaDeviceAttr attribute, int device) {
  return performOnDevice({"cudaDeviceGetAttribute"}, [&](State& state) {
    const Device* const found = find(state, device);
    if (!found) return cudaErrorInvalidDevice;
    if (attribute != cudaDevAttrClockRate) return cudaErrorInvalidValue;
    *value = found->clockRate;
    return cudaSuccess;
  });
}

cudaError_t cudaGetDevice(int* device) {
  return performOnDevice({"cudaGetDevice"}, [&](State& state) {
    if (!device) return cudaErrorInvalidValue;
    *device = state.selected;
    return cudaSuccess;
  });
}

cudaError_t cudaSetDevice(int device) {
  return performOnDevice({"cudaSetDevice", 0, {}, {}, device}, [&](State& state) {
    if (!find(state, device)) return cudaErrorInvalidDevice;
    state.selected = device;
    return cudaSuccess;
  });
}

// A launch returns when its work is done, so there is nothing to wait for.
cudaError_t cudaDeviceSynchronize() {
  return performOnDevice({"cudaDeviceSynchronize"}, [](State&) { return cudaSuccess; });
}

cudaError_t cudaDeviceReset() {
  return performOnDevice({"cudaDeviceReset"}, [](State& state) {
    state.reset();
    return cudaSuccess;
  });
}

}  // namespace pistonfield::emulation::runtime
