#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "FastNearfield/CheckedCalls.h"
#include "FastNearfield/Launchers.h"
#include "FastNearfield/RectangularPiston2.h"
#include "core/cudahelper.h"

// Every way to compute on the device in C++. Whole calls, from its start to its release, are the
// gateway's.

namespace ways {

using launchers::small;
using launchers::Values;
using pistonfield::CudaDeviceThread;
using pistonfield::CudaStorage;

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

/// A list of two pieces, the second a short one.
inline Values listInPieces() {
  setCudaIntegratorParameters("RectangularPiston", 512);
  return launchers::unstructured({121, 85, 2});
}

/// A list of points in double precision.
inline Values listOfDoubles() {
  setCudaIntegratorParameters("RectangularPiston", 12);
  return launchers::doubles(small);
}

struct Way {
  std::string name;
  Values (*call)();
  checked_calls::Steps steps;
  bool inHostMemory = false;  // for a device that works in the host's memory
};

inline void PrintTo(const Way& way, std::ostream* out) { *out << way.name; }

template <Values (*launcher)(const launchers::Size&)>
Values launched() {
  return launcher(small);
}

inline std::vector<Way> all() {
  using namespace checked_calls;
  // Of the grid of the launchers, and of the one above.
  const char* const shown = "0.125 0.25 -0.5 0.0625 -0.25";
  const char* const shownOfCompute = "0.5 0 0 -0.75 0";
  const dim3 ofCompute(1, 1);
  const Steps order12 = order(12, "-0.981561");
  return {
    {"RectangularPiston_func_unstructured", launched<launchers::unstructured>, smallList},
        {"RectangularPiston_func", launched<launchers::grid>,
         checked_calls::grid(1224, shown, gridShape)},
        {"RectangularPiston_func2", launched<launchers::split>, split},
        {"RectangularPiston_func_structured", launched<launchers::structured>, structured},
        {"do_calculate_grid", launched<launchers::twelveScalars>, twelveScalars(single, 1224)},
        {"do_calculate", launched<launchers::fromCentre>, fromCentre(single, 1224)},
        {"RectangularPiston_func_d", launched<launchers::grid_d>, grid_d(2448, gridShape)},
        {"RectangularPiston_func2_d", launched<launchers::split_d>, split_d},
        {"do_calculate_grid_d", launched<launchers::twelveScalars_d>, twelveScalars(dual, 2448)},
        {"do_calculate_d", launched<launchers::fromCentre_d>, fromCentre(dual, 2448)},
        {"computeFloats", computed<float>, checked_calls::grid(96, shownOfCompute, ofCompute)},
        {"computeDoubles", computed<double>,
         Steps{print("computeCudaDouble 1")} + grid_d(192, ofCompute)},
        {"computeOnStorage", computedOnStorage,
         storage(Steps{print("CudaStorage function in RectangularPistonCuda2")} +
                 grid_device(shownOfCompute, ofCompute))},
        {"listOfDoubles", listOfDoubles, order12 + smallList},
        {"listOfDoublesInHostMemory", listOfDoubles, order12 + inHostMemory(smallList), true},
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        // The hundreds of runs would take minutes with a sanitizer. The launcher waits for the
        // first piece.
        {"listInPieces", listInPieces,
         order(512, "-0.999989") +
             unstructured(20570, "grid: 3 64 1\n24576",
                          Steps{piece(), call("cudaDeviceSynchronize", "cudaThreadSynchronize()")} +
                              launch(dim3(1, 64)))},
#endif
  };
}

}  // namespace ways
