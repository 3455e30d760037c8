#pragma once

#include <cstddef>
#include <memory>

namespace pistonfield {

/// A typed result buffer with a host side and a device side of the same size. Neither side follows
/// the other by itself: `toDevice` and `toHost` copy.
///
/// Make it, copy and destroy it inside one CudaDeviceThread, on that one's thread: the device side
/// ends with the outermost such scope of any thread.
class CudaStorage {
 public:
  enum Type { DT_FLOAT, DT_DOUBLE };

  /// A storage of `size` scalars (twice the number of points for complex values), zero on both
  /// sides. A device without memory for it goes to the error handler.
  CudaStorage(Type type, std::size_t size);

  Type getType() const { return type_; }
  std::size_t getSize() const { return size_; }

  /// The host side; null when the storage is of the other type.
  float* getFloatData() { return floats_.get(); }
  double* getDoubleData() { return doubles_.get(); }

  /// The device side, of the storage's type.
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
