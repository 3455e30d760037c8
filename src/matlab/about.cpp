#include <mex.h>
#include "core/CudaCompatibility.h"

#include <new>
#include <string>

#include "core/Compiler.h"
#include "core/FastestDevice.h"
#include "core/Progress.h"
#include "device.h"
#include "lanes/InstructionSet.h"
#include "version.h"

// about = pistonfield_about(): version, build and device of pistonfield, as a struct of texts.

namespace pistonfield {
namespace {

#if PISTONFIELD_USE_CUDA

std::string workers(const cudaDeviceProp& device) {
  return std::to_string(device.multiProcessorCount) + " multiprocessors of compute capability " +
         std::to_string(device.major) + "." + std::to_string(device.minor);
}

std::string instructions() { return "CUDA"; }

#else

std::string workers(const cudaDeviceProp& device) {
  return std::to_string(device.multiProcessorCount) + " threads";
}

std::string instructions() { return nameOf(instructionSet()); }

#endif

struct Device {
  std::string name, workers;
};

/// The device that calls run on. If there is none, `name` is the reason.
Device device() {
  showProgress(false);  // selecting a device writes lines about unknown ones
  int count = 0;
  cudaError_t error = cudaGetDeviceCount(&count);
  cudaDeviceProp properties{};
  if (error == cudaSuccess) error = cudaGetDeviceProperties(&properties, fastestDevice());
  cudaGetLastError();
  if (error != cudaSuccess) return {std::string("none: ") + cudaGetErrorString(error), ""};
  return {properties.name, workers(properties)};
}

mxArray* about() {
  const Device used = device();
  const char* names[] = {"version", "revision", "compiled",     "compiler",
                         "device",  "reason",   "instructions", "workers"};
  const std::string values[] = {PISTONFIELD_VERSION, PISTONFIELD_COMMIT, PISTONFIELD_COMPILED_ON,
                                compiler(),          used.name,          PISTONFIELD_DEVICE_REASON,
                                instructions(),      used.workers};
  constexpr int fields = sizeof names / sizeof names[0];
  mxArray* const result = mxCreateStructMatrix(1, 1, fields, names);
  for (int field = 0; field < fields; ++field)
    mxSetField(result, 0, names[field], mxCreateString(values[field].c_str()));
  return result;
}

}  // namespace
}  // namespace pistonfield

void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
  static_cast<void>(prhs);
  if (nlhs > 1 || nrhs > 0)
    mexErrMsgTxt("Too many arguments. Call it as about = pistonfield_about ().");
  bool outOfMemory = false;
  try {
    plhs[0] = pistonfield::about();
  } catch (const std::bad_alloc&) {
    outOfMemory = true;
  }
  if (outOfMemory) mexErrMsgTxt("There is not enough memory.");
}
