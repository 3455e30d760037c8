#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "FastNearfield/Launchers.h"
#include "FastNearfield/RectangularPiston2.h"
#include "core/cudahelper.h"

// Every way to use the device in C++.

namespace ways {

using launchers::small;
using launchers::Values;
using pistonfield::CudaDeviceThread;
using pistonfield::CudaStorage;

/// What a caller may have under way when the device is released.
struct Interruption {};

inline const pistonfield::RectangularPistonCuda2 piston{2, 4, 5};
inline const pistonfield::Grid3DR<double> grid(3, 2, 2,
                                               {0.5, 0, 0, -0.75, 0, 0.25, 0, 0.5, 0, 0, 2, 1, 0, 0,
                                                0, 1});

template <class T>
Values paired(const std::vector<T>& numbers) {
  Values values;
  for (std::size_t i = 0; i < numbers.size(); i += 2)
    values.emplace_back(numbers[i], numbers[i + 1]);
  return values;
}

template <class T>
Values computed() {
  std::vector<T> numbers(std::size_t{2} * grid.nbPositions());
  piston.compute(numbers.data(), grid);
  return paired(numbers);
}

inline Values computedOnStorage() {
  CudaStorage storage(CudaStorage::DT_FLOAT, std::size_t{2} * grid.nbPositions());
  piston.compute(&storage, grid);
  storage.toHost();
  return paired<float>({storage.getFloatData(), storage.getFloatData() + storage.getSize()});
}

inline Values wholeCallWithOrder() {
  const CudaDeviceThread device;
  setCudaIntegratorParameters("RectangularPiston", 12);
  return launchers::unstructured(small);
}

inline Values wholeCallWithTable() {
  const CudaDeviceThread device;
  const float x[] = {0.861136f, 0.339981f}, w[] = {0.347855f, 0.652145f};
  setIntegratorWeightsSym("RectangularPiston", x, w, 4);
  return launchers::unstructured(small);
}

inline Values interruptedCall() {
  const CudaDeviceThread device;
  setCudaIntegratorParameters("RectangularPiston", 12);
  launchers::unstructured(small);
  throw Interruption();
}

/// A list of two pieces, the second a short one.
inline Values listInPieces() {
  setCudaIntegratorParameters("RectangularPiston", 512);
  return launchers::unstructured({121, 85, 2});
}

struct Way {
  std::string name;
  Values (*call)();
  bool releasesSilently;  // the last of its device memory, in a destructor
};

inline void PrintTo(const Way& way, std::ostream* out) { *out << way.name; }

template <Values (*launcher)(const launchers::Size&)>
Values launched() {
  return launcher(small);
}

inline const std::vector<Way> all = {
    {"RectangularPiston_func_unstructured", launched<launchers::unstructured>, false},
    {"RectangularPiston_func", launched<launchers::grid>, false},
    {"RectangularPiston_func2", launched<launchers::split>, false},
    {"RectangularPiston_func_structured", launched<launchers::structured>, false},
    {"do_calculate_grid", launched<launchers::twelveScalars>, false},
    {"do_calculate", launched<launchers::fromCentre>, false},
    {"RectangularPiston_func_d", launched<launchers::grid_d>, false},
    {"RectangularPiston_func2_d", launched<launchers::split_d>, false},
    {"do_calculate_grid_d", launched<launchers::twelveScalars_d>, false},
    {"do_calculate_d", launched<launchers::fromCentre_d>, false},
    {"computeFloats", computed<float>, false},
    {"computeDoubles", computed<double>, false},
    {"computeOnStorage", computedOnStorage, true},
    {"wholeCallWithOrder", wholeCallWithOrder, false},
    {"wholeCallWithTable", wholeCallWithTable, false},
    {"interruptedCall", interruptedCall, false},
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    {"listInPieces", listInPieces, false},  // sanitized, hundreds of them take minutes
#endif
};

}  // namespace ways
