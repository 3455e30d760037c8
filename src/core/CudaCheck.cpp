#include "core/CudaCheck.h"

#include <cstdio>
#include <string>

namespace pistonfield {

cudaError_t stageCheck(const char* stage, SourceLocation location) {
  const cudaError_t error = cudaGetLastError();
  if (error == cudaSuccess) return error;
  const char* text = cudaGetErrorString(error);
  std::fprintf(stderr, "Cuda error: %s in file '%s' in line %i : %s.\n", stage, location.file,
               location.line, text);
  fail(text, location);
  return error;
}

bool callCheck(cudaError_t code, const char* call, SourceLocation location) {
  if (code == cudaSuccess) return true;
  const std::string message =
      std::string("Cuda error when calling ") + call + ": " + cudaGetErrorString(code);
  fail(message.c_str(), location);
  return false;
}

}  // namespace pistonfield
