#include "emulation/State.h"

#include <cstring>
#include <iterator>

#include "parallel/Cores.h"

namespace pistonfield::emulation {
namespace {

std::vector<Device> ownDevices() {
  Device device{};
  std::strncpy(device.properties.name, "Device Emulation (CPU)", sizeof device.properties.name - 1);
  device.properties.major = 9999;
  device.properties.minor = 9999;
  device.properties.multiProcessorCount = static_cast<int>(parallel::cores());
  device.clockRate = 1000000;  // nominal; the ranking of devices needs a positive number
  return {device};
}

}  // namespace

State::State() : devices(ownDevices()) {}

cudaError_t State::begin(const Call& call) {
  if (recording_) record_.push_back(call);
  cudaError_t error = cudaSuccess;
  for (Fault& fault : faults_) {
    if (!fault.function.empty() && fault.function != call.function) continue;
    --fault.countdown;
    if (fault.countdown == 0 || (fault.countdown < 0 && fault.lasting)) error = fault.error;
  }
  return error;
}

void State::reset() {
  allocations.clear();
  for (const auto& [symbol, size] : symbols) std::memset(symbol, 0, size);
  symbols.clear();
}

bool State::owns(const void* pointer, std::size_t size) const {
  const auto* const begin = static_cast<const std::byte*>(pointer);
  auto next = allocations.upper_bound(begin);
  if (next == allocations.begin()) return false;
  const auto& [base, allocation] = *std::prev(next);
  const auto offset = static_cast<std::size_t>(begin - base);
  return offset <= allocation.size && size <= allocation.size - offset;
}

void State::failCall(const std::string& function, int nth, cudaError_t error, bool lasting) {
  faults_.push_back({function, nth, error, lasting});
}

void State::pretendDevices(const std::vector<Device>& pretended) { devices = pretended; }

void State::separateMemory() { memoryIsSeparate = true; }

void State::poisonFreshMemory() { poison = true; }

void State::recordCalls() {
  record_.clear();
  recording_ = true;
}

void State::restore() {
  reset();
  *this = State();
}

std::vector<Call> State::calls() const { return record_; }

const char* State::errorString(cudaError_t error) const { return cudaGetErrorString(error); }

cudaError_t State::allocate(void** pointer, std::size_t size) { return cudaMalloc(pointer, size); }

cudaError_t State::copy(void* destination, const void* source, std::size_t size,
                        cudaMemcpyKind kind) {
  return cudaMemcpy(destination, source, size, kind);
}

int State::selectedDevice() const { return selected; }

std::size_t State::liveAllocations() const { return allocations.size(); }

State& theState() {
  static State state;
  return state;
}

std::mutex& stateLock() {
  static std::mutex lock;
  return lock;
}

}  // namespace pistonfield::emulation

pistonfield::emulation::TestControl* emulationTestControl() {
  return &pistonfield::emulation::theState();
}
