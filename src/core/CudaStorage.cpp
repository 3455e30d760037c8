#include "core/CudaStorage.h"

#include "core/CudaCheck.h"

namespace pistonfield {
namespace {
constexpr const char* sourceFile = "src/core/CudaStorage";
}

CudaStorage::CudaStorage(Type type, std::size_t size) : type_(type), size_(size) {
  if (type == DT_FLOAT)
    floats_ = std::make_unique<float[]>(size);
  else
    doubles_ = std::make_unique<double[]>(size);
  const ReportedErrorIsCleared guard;
  void* device = nullptr;
  callCheck(cudaMalloc(&device, bytes()), "cudaMalloc(&device, bytes)", HERE);
  device_.reset(device);
  toDevice();
}

void CudaStorage::FreeOnDevice::operator()(void* memory) const {
  static_cast<void>(cudaFree(memory));
}

void CudaStorage::toDevice() {
  const ReportedErrorIsCleared guard;
  callCheck(cudaMemcpy(device_.get(), host(), bytes(), cudaMemcpyHostToDevice),
            "cudaMemcpy(device, host, bytes, cudaMemcpyHostToDevice)", HERE);
}

void CudaStorage::toHost() {
  const ReportedErrorIsCleared guard;
  callCheck(cudaMemcpy(host(), device_.get(), bytes(), cudaMemcpyDeviceToHost),
            "cudaMemcpy(host, device, bytes, cudaMemcpyDeviceToHost)", HERE);
}

std::size_t CudaStorage::bytes() const {
  return size_ * (type_ == DT_FLOAT ? sizeof(float) : sizeof(double));
}

void* CudaStorage::host() const {
  if (type_ == DT_FLOAT) return floats_.get();
  return doubles_.get();
}

}  // namespace pistonfield
