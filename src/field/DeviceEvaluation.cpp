#include "field/DeviceEvaluation.h"

#include <algorithm>
#include <string>
#include <utility>

#include "core/CudaCompatibility.h"
#include "field/field.h"

namespace pistonfield {
namespace {

/// How many points times pistons outweigh the transfers and the start of the device, which takes
/// some tenths of a second, once in a process. An estimate: eight cores evaluate this many in about
/// that time.
constexpr double leastWork = 1 << 24;

void check(cudaError_t error) {
  if (error == cudaSuccess) return;
  cudaGetLastError();  // clears it: it must not fail the next call as well
  throw FieldError(std::string("The GPU failed (") + cudaGetErrorString(error) +
                   "). Close other programs that use the GPU, or use a build without CUDA.");
}

}  // namespace

template <class T>
DeviceEvaluation::Array<T>::Array(std::vector<T> content) : values(std::move(content)) {
  check(onDevice.allocate(values.data(), values.size() * sizeof(T)));
}

template <class T>
void DeviceEvaluation::Array<T>::upload() {
  check(onDevice.upload());
}

template <class T>
void DeviceEvaluation::Array<T>::download() {
  check(onDevice.download());
}

bool DeviceEvaluation::isFaster(std::size_t points, std::size_t pistons) {
  return static_cast<double>(points) * static_cast<double>(pistons) >= leastWork &&
         isGpuForPistons();
}

DeviceEvaluation::DeviceEvaluation(const std::vector<WeightedPiston>& pistons,
                                   const GaussRules<float>& rules,
                                   const GaussRules<double>& preciseRules, std::size_t points)
    : fromStart_(rules.fromStart()),
      w_(rules.w()),
      preciseFromStart_(preciseRules.fromStart()),
      preciseW_(preciseRules.w()),
      pistons_(pistons),
      x_(std::vector<double>(std::min(points, mostPoints))),
      y_(x_.values),
      z_(x_.values),
      re_(x_.values),
      im_(x_.values),
      used_(std::vector<UsedAtPoint>(x_.values.size())) {
  for (WeightedPiston& piston : pistons_.values) {
    piston.rules = {fromStart_.onDevice.get(), w_.onDevice.get(), rules.table().least};
    piston.preciseRules = {preciseFromStart_.onDevice.get(), preciseW_.onDevice.get(),
                           preciseRules.table().least};
  }
  fromStart_.upload();
  w_.upload();
  preciseFromStart_.upload();
  preciseW_.upload();
  pistons_.upload();
}

void DeviceEvaluation::run(std::size_t count, const std::function<void(double)>& progress,
                           std::size_t workOfLaunch) {
  x_.upload();
  y_.upload();
  z_.upload();
  const PointsOnDevice points{x_.onDevice.get(),       y_.onDevice.get(),  z_.onDevice.get(),
                              static_cast<int>(count), re_.onDevice.get(), im_.onDevice.get(),
                              used_.onDevice.get()};
  const std::size_t all = pistons_.values.size(),
                    piece = std::max<std::size_t>(workOfLaunch / count, 1);
  for (std::size_t first = 0; first < all; first += piece) {
    const std::size_t last = std::min(first + piece, all);
    check(launchPistons(points, pistons_.onDevice.get(), static_cast<int>(first),
                        static_cast<int>(last)));
    check(waitForDevice());
    progress(static_cast<double>(last - first) / static_cast<double>(all));
  }
  re_.download();
  im_.download();
  used_.download();
}

}  // namespace pistonfield
