#include "core/CudaCheck.h"

#include <cstdio>
#include <string>

namespace pistonfield {

void stageCheck(const char* stage, SourceLocation location) {
  const cudaError_t error = cudaGetLastError();
  if (error == cudaSuccess) return;
  const char* text = cudaGetErrorString(error);
  std::fprintf(stderr, "Cuda error: %s in file '%s' in line %i : %s.\n", stage, location.file,
               location.line, text);
  fail(text, location);
}

void callCheck(cudaError_t code, const char* call, SourceLocation location) {
  if (code == cudaSuccess) return;
  const std::string message =
      std::string("Cuda error when calling ") + call + ": " + cudaGetErrorString(code);
  fail(message.c_str(), location);
}

}  // namespace pistonfield
