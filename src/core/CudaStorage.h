#pragma once

#include <cstddef>
#include <memory>

namespace pistonfield {

/// A result buffer of floats or doubles with a host side and a device side of the same size. The
/// sides are independent; `toDevice` and `toHost` copy one to the other.
///
/// Construct, use and destroy it inside one CudaDeviceThread, on the thread of that scope: the end
/// of the outermost scope may free the device side.
class CudaStorage {
 public:
  enum Type { DT_FLOAT, DT_DOUBLE };

  /// Allocates `size` scalars, twice the number of points for complex values, and sets both sides
  /// to zero. Calls the error handler if the device has too little memory.
  CudaStorage(Type type, std::size_t size);

  Type getType() const { return type_; }
  std::size_t getSize() const { return size_; }

  /// The host side, or null if the storage is of the other type.
  float* getFloatData() { return floats_.get(); }
  double* getDoubleData() { return doubles_.get(); }

  /// The device side.
  void* getDeviceData() const { return device_.get(); }

  void toDevice();
  void toHost();

 private:
  struct FreeOnDevice {
    void operator()(void* memory) const;
  };

  std::size_t bytes() const;
  void* host() const;

  Type type_;
  std::size_t size_;
  std::unique_ptr<float[]> floats_;
  std::unique_ptr<double[]> doubles_;
  std::unique_ptr<void, FreeOnDevice> device_;
};

}  // namespace pistonfield
