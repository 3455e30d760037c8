// Exits with 0 and prints the name of the first GPU if it can be used, else prints why not.
#include <cuda_runtime_api.h>

#include <cstdio>

int main() {
  cudaDeviceProp properties;
  cudaError_t error = cudaGetDeviceProperties(&properties, 0);
  if (error == cudaSuccess) error = cudaFree(nullptr);  // makes a context
  std::puts(error == cudaSuccess ? properties.name : cudaGetErrorString(error));
  return error == cudaSuccess ? 0 : 1;
}
