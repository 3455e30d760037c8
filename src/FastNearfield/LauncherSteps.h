#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <string>

#include "FastNearfield/LaunchShape.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "FastNearfield/RectangularPistonKernels.h"
#include "core/Complex.h"
#include "core/CudaCheck.h"
#include "core/CudaCompatibility.h"
#include "core/DeviceBuffer.h"
#include "core/RuleOwner.h"

// The steps that launchers of both precisions share. Users read the texts of the checks in error
// messages; `location` is the launcher's own.

namespace pistonfield {

/// What differs between the launchers of the two precisions.
template <class T>
struct LauncherTraits;

template <>
struct LauncherTraits<float> {
  static constexpr Precision precision = Precision::SINGLE;
  static constexpr const char* copyAbscissas = "cudaMemcpyToSymbol( buf, data_x, datasize )";
  static constexpr const char* allocateTransform =
      "cudaMalloc((void**)&d_transform, 16*sizeof(float))";
  static constexpr const char* copyTransform =
      "cudaMemcpy( d_transform, transform, 16*sizeof(float), cudaMemcpyHostToDevice )";
};

template <>
struct LauncherTraits<double> {
  static constexpr Precision precision = Precision::DOUBLE;
  static constexpr const char* copyAbscissas = "err";
  static constexpr const char* allocateTransform =
      "cudaMalloc((void**)&d_transform, 16*sizeof(double))";
  static constexpr const char* copyTransform =
      "cudaMemcpy( d_transform, transform, 16*sizeof(double), cudaMemcpyHostToDevice )";
};

/// Calls launchKernels(). If `do_timing` is set, waits for the kernels and stores the time in
/// `global_time`.
template <class LaunchKernels>
void timed(SourceLocation location, const LaunchKernels& launchKernels) {
  using std::chrono::system_clock;
  const system_clock::time_point t0 = system_clock::now();
  launchKernels();
  if (do_timing == 0) return;
  callCheck(waitForDevice(), "cudaThreadSynchronize()", location);
  const auto elapsed =
      std::chrono::duration_cast<std::chrono::microseconds>(system_clock::now() - t0);
  global_time = static_cast<std::int32_t>(elapsed.count());
}

/// Launches one kernel, and times it if `do_timing` is set.
template <class... Arguments>
void launchTimed(SourceLocation location, typename KernelOf<Arguments...>::Type kernel, dim3 grid,
                 dim3 block, Arguments... arguments) {
  timed(location, [&] { launch(kernel, grid, block, arguments...); });
}

/// Half the piston's sides along x and along y, as kernels take them.
template <class T>
struct HalfSides {
  /// Explicit, so that a launcher cannot pass its whole sides as {a, b}.
  explicit HalfSides(T halfWidth, T halfHeight) : width(halfWidth), height(halfHeight) {}
  T width, height;
};

/// For the sides as launchers take them: `a` along y, `b` along x.
template <class T>
HalfSides<T> halfSides(T a, T b) {
  return HalfSides<T>(half(b), half(a));
}

/// A grid's transform on the device.
template <class T>
class DeviceTransform {
 public:
  DeviceTransform(T* transform, SourceLocation location) : location_(location) {
    callCheck(values_.allocate(transform, 16 * sizeof(T)), LauncherTraits<T>::allocateTransform,
              location_);
    callCheck(values_.upload(), LauncherTraits<T>::copyTransform, location_);
  }
  T* get() const { return values_.get(); }
  void free() { callCheck(values_.free(), "cudaFree(d_transform)", location_); }

 private:
  const SourceLocation location_;
  DeviceBuffer<T> values_;
};

/// The results of a kernel on the device, as complex pairs.
template <class T>
class PairResults {
 public:
  PairResults(ComplexPair<T>* data, std::size_t datasize, SourceLocation location)
      : location_(location) {
    callCheck(d_array_.allocate(data, datasize), "cudaMalloc((void**)&d_array, datasize)",
              location_);
  }
  ComplexPair<T>* onDevice() const { return d_array_.get(); }

  /// Copies the results to `data` and frees the device memory.
  void fetch() {
    callCheck(d_array_.download(),
              "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )", location_);
    callCheck(d_array_.free(), "cudaFree(d_array)", location_);
  }

 private:
  const SourceLocation location_;
  DeviceBuffer<ComplexPair<T>> d_array_;
};

/// The same with real and imaginary parts in two arrays of `datasize` bytes each. Where they
/// overlap, the imaginary parts remain.
template <class T>
class SplitResults {
 public:
  SplitResults(T* datar, T* datai, std::size_t datasize, SourceLocation location)
      : location_(location) {
    callCheck(d_arrayr_.allocate(datar, datasize), "cudaMalloc((void**)&d_arrayr, datasize)",
              location_);
    callCheck(d_arrayi_.allocate(datai, datasize, d_arrayr_),
              "cudaMalloc((void**)&d_arrayi, datasize)", location_);
  }
  T* realOnDevice() const { return d_arrayr_.get(); }
  T* imaginaryOnDevice() const { return d_arrayi_.get(); }

  void fetch() {
    callCheck(d_arrayr_.download(),
              "cudaMemcpy( &datar[0], d_arrayr, datasize, cudaMemcpyDeviceToHost )", location_);
    callCheck(d_arrayi_.download(),
              "cudaMemcpy( &datai[0], d_arrayi, datasize, cudaMemcpyDeviceToHost )", location_);
    callCheck(d_arrayr_.free(), "cudaFree(d_arrayr)", location_);
    callCheck(d_arrayi_.free(), "cudaFree(d_arrayi)", location_);
  }

 private:
  const SourceLocation location_;
  DeviceBuffer<T> d_arrayr_, d_arrayi_;
};

/// The steps of do_calculate and do_calculate_d.
template <class T>
void calculateFromCentre(SourceLocation location, GridFromCentre<T>* kernel, ComplexPair<T>* data,
                         int sx, int sy, int sz, T dx, T dy, T dz, HalfSides<T> sides, T k) {
  stageCheck("pre do_calculate", location);
  PairResults<T> results(data, resultBytes(sx, sy, sz, sizeof *data), location);
  launch(kernel, regularGridShape(sx, sy, sz), blockShape, results.onDevice(), sx, sy, sz, dx, dy,
         dz, sides.width, sides.height, k);
  stageCheck("calculate", location);
  results.fetch();
}

/// The steps of do_calculate_grid and do_calculate_grid_d; `t` is the first three rows of the
/// transform.
template <class T>
void calculateByValues(SourceLocation location, GridByValues<T>* kernel, ComplexPair<T>* data,
                       int sx, int sy, int sz, const std::array<T, 12>& t, HalfSides<T> sides,
                       T k) {
  stageCheck("pre do_calculate_grid", location);
  PairResults<T> results(data, resultBytes(sx, sy, sz, sizeof *data), location);
  launchTimed(location, kernel, regularGridShape(sx, sy, sz), blockShape, results.onDevice(), sx,
              sy, sz, t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8], t[9], t[10], t[11],
              sides.width, sides.height, k);
  stageCheck("calculate_grid", location);
  results.fetch();
}

/// The steps of loading a rule that follow the checks of its order. Writes it with
/// writeSymbol(name, data, size). Without symbols for double precision it prints that and loads
/// nothing.
template <class T, class WriteSymbol>
void loadRule(SourceLocation location, const WriteSymbol& writeSymbol, const std::string& prefix,
              const T* x, const T* w, int N) {
  using Traits = LauncherTraits<T>;
  const std::size_t datasize = static_cast<std::size_t>((N + 1) / 2) * sizeof(T);
  forgetRule(Traits::precision);
  const cudaError_t error = writeSymbol(prefix + "x", x, datasize);
  if (error == cudaErrorInvalidSymbol && Traits::precision == Precision::DOUBLE) {
    std::cerr << "Support for double not found" << std::endl;
    cudaGetLastError();
    return;
  }
  bool loaded = callCheck(error, Traits::copyAbscissas, location);
  loaded &= callCheck(writeSymbol(prefix + "w", w, datasize),
                      "cudaMemcpyToSymbol( buf, data_w, datasize )", location);
  loaded &= callCheck(writeSymbol(prefix + "N", &N, sizeof(int)),
                      "cudaMemcpyToSymbol( buf, (void*)&N, sizeof(int) )", location);
  if (loaded) noteRule(Traits::precision);
  stageCheck("end setIntegratorWeightsSym", location);
}

}  // namespace pistonfield
