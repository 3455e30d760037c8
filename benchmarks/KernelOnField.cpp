#include "benchmarks/KernelOnField.h"

#include <cuda_runtime.h>

#include <cstddef>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "benchmarks/Fields.h"
#include "core/CudaCheck.h"
#include "core/Progress.h"

using namespace pistonfield;

namespace {
constexpr const char* sourceFile = "benchmarks/KernelOnField";
}

KernelOnField::KernelOnField(const std::vector<float>& positions)
    : points_(static_cast<int>(positions.size() / 3)),
      nodesOfOrderOne_(fields::nodes(positions, 1)) {
  tellProgress(false);
  const std::size_t bytes = positions.size() * sizeof(float);
  ready_ = d_pos_.allocate(bytes) == cudaSuccess &&
           d_array_.allocate(static_cast<std::size_t>(points_) * sizeof(Complex)) == cudaSuccess &&
           cudaMemcpy(d_pos_.get(), positions.data(), bytes, cudaMemcpyHostToDevice) == cudaSuccess;
  if (!ready_) return;
  setOrder(2);
  run();  // the first touch of the buffers
}

void KernelOnField::setOrder(int order) { setCudaIntegratorParameters("RectangularPiston", order); }

void KernelOnField::run() {
  RectangularPiston_func_unstructured_device(d_array_.get(), points_, d_pos_.get(), fields::l,
                                             fields::s, fields::k);
  callCheck(cudaDeviceSynchronize(), "cudaDeviceSynchronize()", HERE);
}
