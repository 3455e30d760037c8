#include <cstddef>
#include <iostream>
#include <string>

#include "FastNearfield/IntegratorCuda.h"
#include "core/CudaCheck.h"
#include "core/CudaToday.h"

using pistonfield::callCheck;
using pistonfield::copyTo;
using pistonfield::stageCheck;

namespace {
constexpr const char* sourceFile = "src/FastNearfield/RectangularPistonCuda.dp";
}

// The rule, in constant memory. The "dp" belongs to the model's name.

__constant__ double global_dpRectangularPiston_double_x[256];
__constant__ double global_dpRectangularPiston_double_w[256];
__constant__ int global_dpRectangularPiston_double_N;

namespace {

cudaError_t writeSymbol(const std::string& symbol, const void* data, std::size_t size) {
  return pistonfield::cudaMemcpyToSymbol(
      {{"global_dpRectangularPiston_double_x", copyTo<global_dpRectangularPiston_double_x>},
       {"global_dpRectangularPiston_double_w", copyTo<global_dpRectangularPiston_double_w>},
       {"global_dpRectangularPiston_double_N", copyTo<global_dpRectangularPiston_double_N>}},
      symbol.c_str(), data, size);
}

}  // namespace

void setIntegratorWeightsSym_d(const char* name, const double* x, const double* w, int N) {
  std::cout << "set weights double" << std::endl;
  stageCheck("start setIntegratorWeightsSym", HERE);
  if (N < 1 || N > 512) {
    pistonfield::fail("N <= 512 && N>0", HERE);
    return;  // there is no such table to read or to write
  }
  const std::size_t datasize = static_cast<std::size_t>((N + 1) / 2) * sizeof(double);
  const std::string prefix = std::string("global_dp") + name + "_double_";

  std::cout << x[0] << std::endl;
  const cudaError_t err = writeSymbol(prefix + "x", x, datasize);
  if (err == cudaErrorInvalidSymbol) {  // what a device image without double precision lacks
    std::cerr << "Support for double not found" << std::endl;
    cudaGetLastError();
    return;
  }
  callCheck(err, "err", HERE);
  callCheck(writeSymbol(prefix + "w", w, datasize), "cudaMemcpyToSymbol( buf, data_w, datasize )",
            HERE);
  callCheck(writeSymbol(prefix + "N", &N, sizeof(int)),
            "cudaMemcpyToSymbol( buf, (void*)&N, sizeof(int) )", HERE);
  stageCheck("end setIntegratorWeightsSym", HERE);
}
