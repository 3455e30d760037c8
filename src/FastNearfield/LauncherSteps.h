#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "FastNearfield/LaunchShape.h"
#include "FastNearfield/LaunchTiming.h"
#include "FastNearfield/RectangularPistonKernels.h"
#include "core/Complex.h"
#include "core/CudaCheck.h"
#include "core/CudaCompatibility.h"
#include "core/DeviceBuffer.h"
#include "core/LoadedRules.h"

// What the launchers of both precisions share. The texts of the checks are what users read in error
// messages.

namespace pistonfield {

/// What differs between the launchers of the two precisions.
template <class T>
struct LauncherTraits;

template <>
struct LauncherTraits<float> {
  static constexpr Precision precision = Precision::SINGLE;
  static constexpr const char* sourceFile = "src/FastNearfield/RectangularPistonCuda";
  static constexpr const char* allocateTransform =
      "cudaMalloc((void**)&d_transform, 16*sizeof(float))";
  static constexpr const char* copyTransform =
      "cudaMemcpy( d_transform, transform, 16*sizeof(float), cudaMemcpyHostToDevice )";
};

template <>
struct LauncherTraits<double> {
  static constexpr Precision precision = Precision::DOUBLE;
  static constexpr const char* sourceFile = "src/FastNearfield/RectangularPistonCuda.dp";
  static constexpr const char* allocateTransform =
      "cudaMalloc((void**)&d_transform, 16*sizeof(double))";
  static constexpr const char* copyTransform =
      "cudaMemcpy( d_transform, transform, 16*sizeof(double), cudaMemcpyHostToDevice )";
};

/// The half-width and half-height that kernels take, for the sides `a` along y and `b` along x.
template <class T>
struct HalfSides {
  HalfSides(T a, T b) : width(half(b)), height(half(a)) {}
  T width, height;
};

/// A grid's transform on the device.
template <class T>
class DeviceTransform {
 public:
  explicit DeviceTransform(T* transform) {
    callCheck(values_.allocate(transform, 16 * sizeof(T)), LauncherTraits<T>::allocateTransform,
              HERE);
    callCheck(values_.upload(), LauncherTraits<T>::copyTransform, HERE);
  }
  T* get() const { return values_.get(); }
  void free() { callCheck(values_.free(), "cudaFree(d_transform)", HERE); }

 private:
  static constexpr const char* sourceFile = LauncherTraits<T>::sourceFile;
  DeviceBuffer<T> values_;
};

/// The results of a kernel on the device, as complex pairs.
template <class T>
class PairResults {
 public:
  PairResults(ComplexPair<T>* data, std::size_t datasize) {
    callCheck(d_array_.allocate(data, datasize), "cudaMalloc((void**)&d_array, datasize)", HERE);
  }
  ComplexPair<T>* onDevice() const { return d_array_.get(); }

  /// Copies the results to `data` and frees the device memory.
  void fetch() {
    callCheck(d_array_.download(),
              "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )", HERE);
    callCheck(d_array_.free(), "cudaFree(d_array)", HERE);
  }

 private:
  static constexpr const char* sourceFile = LauncherTraits<T>::sourceFile;
  DeviceBuffer<ComplexPair<T>> d_array_;
};

/// The same with real and imaginary parts in arrays of their own, `datasize` bytes each.
template <class T>
class SplitResults {
 public:
  SplitResults(T* datar, T* datai, std::size_t datasize) {
    callCheck(d_arrayr_.allocate(datar, datasize), "cudaMalloc((void**)&d_arrayr, datasize)", HERE);
    callCheck(d_arrayi_.allocate(datai, datasize), "cudaMalloc((void**)&d_arrayi, datasize)", HERE);
  }
  T* realOnDevice() const { return d_arrayr_.get(); }
  T* imaginaryOnDevice() const { return d_arrayi_.get(); }

  void fetch() {
    callCheck(d_arrayr_.download(),
              "cudaMemcpy( &datar[0], d_arrayr, datasize, cudaMemcpyDeviceToHost )", HERE);
    callCheck(d_arrayi_.download(),
              "cudaMemcpy( &datai[0], d_arrayi, datasize, cudaMemcpyDeviceToHost )", HERE);
    callCheck(d_arrayr_.free(), "cudaFree(d_arrayr)", HERE);
    callCheck(d_arrayi_.free(), "cudaFree(d_arrayi)", HERE);
  }

 private:
  static constexpr const char* sourceFile = LauncherTraits<T>::sourceFile;
  DeviceBuffer<T> d_arrayr_, d_arrayi_;
};

/// The steps of do_calculate and do_calculate_d.
template <class T>
void calculateFromCentre(GridFromCentre<T>* kernel, ComplexPair<T>* data, int sx, int sy, int sz,
                         T dx, T dy, T dz, HalfSides<T> sides, T k) {
  constexpr const char* sourceFile = LauncherTraits<T>::sourceFile;
  stageCheck("pre do_calculate", HERE);
  PairResults<T> results(data, gridBytes(sx, sy, sz, sizeof *data));
  launch(kernel, regularGridShape(sx, sy, sz), blockShape, results.onDevice(), sx, sy, sz, dx, dy,
         dz, sides.width, sides.height, k);
  stageCheck("calculate", HERE);
  results.fetch();
}

/// The steps of do_calculate_grid and do_calculate_grid_d; `t` is the first three rows of the
/// transform.
template <class T>
void calculateByValues(GridByValues<T>* kernel, ComplexPair<T>* data, int sx, int sy, int sz,
                       const std::array<T, 12>& t, HalfSides<T> sides, T k) {
  constexpr const char* sourceFile = LauncherTraits<T>::sourceFile;
  stageCheck("pre do_calculate_grid", HERE);
  PairResults<T> results(data, gridBytes(sx, sy, sz, sizeof *data));
  launchTimed(HERE, kernel, regularGridShape(sx, sy, sz), blockShape, results.onDevice(), sx, sy,
              sz, t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8], t[9], t[10], t[11],
              sides.width, sides.height, k);
  stageCheck("calculate_grid", HERE);
  results.fetch();
}

/// The last steps of loading a rule: writes the weights and the order with writeSymbol(name, data,
/// size). `abscissasAreLoaded` is the result of the previous step.
template <class T, class WriteSymbol>
void loadWeightsAndOrder(const WriteSymbol& writeSymbol, const std::string& prefix, const T* w,
                         int N, bool abscissasAreLoaded) {
  constexpr const char* sourceFile = LauncherTraits<T>::sourceFile;
  const std::size_t datasize = static_cast<std::size_t>((N + 1) / 2) * sizeof(T);
  bool loaded = abscissasAreLoaded;
  loaded &= callCheck(writeSymbol(prefix + "w", w, datasize),
                      "cudaMemcpyToSymbol( buf, data_w, datasize )", HERE);
  loaded &= callCheck(writeSymbol(prefix + "N", &N, sizeof(int)),
                      "cudaMemcpyToSymbol( buf, (void*)&N, sizeof(int) )", HERE);
  if (loaded) noteRule(LauncherTraits<T>::precision);
  stageCheck("end setIntegratorWeightsSym", HERE);
}

}  // namespace pistonfield
