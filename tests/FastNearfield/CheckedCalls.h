#pragma once

#include "support/Step.h"

// The registry of calls of the CUDA runtime: for each public function, the calls that it makes, in
// order, and the text of the report if one fails. Ways.h combines them into complete uses of the
// device. EveryCallOfTest fails for a new call in the sources until the call is listed here.

namespace checked_calls {

using support::allocate;
using support::call;
using support::copy;
using support::in;
using support::inHostMemory;
using support::piece;
using support::print;
using support::release;
using support::stage;
using support::Step;
using support::Steps;
using support::timed;
using support::unchecked;

constexpr const char* single = "src/FastNearfield/RectangularPistonCuda";
constexpr const char* dual = "src/FastNearfield/RectangularPistonCuda.dp";

// The start and the end of every call. A sole device is queried twice.

inline const Steps choice = {unchecked("cudaGetDeviceCount"), unchecked("cudaGetDeviceProperties"),
                             unchecked("cudaGetDeviceProperties"),
                             unchecked("cudaDeviceGetAttribute")};

// The line numbers are part of messages that users know.
inline const Steps start =
    choice +
    Steps{unchecked("cudaGetDevice"), unchecked("cudaSetDevice"), unchecked("cudaGetLastError")} +
    in("src/core/cuda_init", {stage("pre cuda_init()", 14), unchecked("cudaLaunchKernel"),
                              stage("post cuda_init()", 16)}) +
    Steps{unchecked("cudaDeviceSynchronize")};

inline const Steps end =
    in("src/core/cudahelper", {call("cudaDeviceReset", "cudaThreadExit()", 25)});

/// The same while an error is already unwinding.
inline const Steps silentEnd = {unchecked("cudaDeviceReset")};

// Rules.

inline Steps table(const std::string& firstAbscissa) {
  return in(single,
            {print("set weights float"), stage("start setIntegratorWeightsSym"),
             print(firstAbscissa), print("symbol: \"global_RectangularPiston_float_x\""),
             call("cudaMemcpyToSymbol", "cudaMemcpyToSymbol( buf, data_x, datasize )"),
             call("cudaMemcpyToSymbol", "cudaMemcpyToSymbol( buf, data_w, datasize )"),
             call("cudaMemcpyToSymbol", "cudaMemcpyToSymbol( buf, (void*)&N, sizeof(int) )"),
             stage("end setIntegratorWeightsSym")});
}

inline Steps order(int order, const std::string& firstAbscissa) {
  const char* const file = "src/FastNearfield/IntegratorCuda";
  return in(file, {stage("start setCudaIntegratorParameters"),
                   print("setting order " + std::to_string(order) +
                         "elements: " + std::to_string((order + 1) / 2))}) +
         in(dual, {print("set weights double"), stage("start setIntegratorWeightsSym"),
                   print(firstAbscissa), call("cudaMemcpyToSymbol", "err"),
                   call("cudaMemcpyToSymbol", "cudaMemcpyToSymbol( buf, data_w, datasize )"),
                   call("cudaMemcpyToSymbol", "cudaMemcpyToSymbol( buf, (void*)&N, sizeof(int) )"),
                   stage("end setIntegratorWeightsSym")}) +
         table(firstAbscissa) + in(file, {stage("end setCudaIntegratorParameters")});
}

// Launches, and the launchers on 153 points, which take 612 bytes with one float per point and 1224
// with a pair.

inline Steps launch(dim3 grid) {
  return {unchecked("cudaLaunchKernel", grid),
          timed(call("cudaDeviceSynchronize", "cudaThreadSynchronize()"))};
}

inline const Steps transform = {
    allocate(64, "cudaMalloc((void**)&d_transform, 16*sizeof(float))"),
    copy(64, "cudaMemcpy( d_transform, transform, 16*sizeof(float), cudaMemcpyHostToDevice )")};

inline const Steps transform_d = {
    allocate(128, "cudaMalloc((void**)&d_transform, 16*sizeof(double))"),
    copy(128, "cudaMemcpy( d_transform, transform, 16*sizeof(double), cudaMemcpyHostToDevice )")};

inline const dim3 gridShape(2, 2);

/// `launches` are those for the list; there may be several.
inline Steps unstructured(std::size_t points, const std::string& shape, const Steps& launches) {
  const std::size_t bytes = 4 * points;
  return in(
      single,
      Steps{stage("pre do_calculate_grid"), print("allocating " + std::to_string(bytes) + " bytes"),
            allocate(2 * bytes, "cudaMalloc((void**)&d_arrayr, datasize*2)"),
            allocate(3 * bytes, "cudaMalloc((void**)&d_pos, nbPositions*3*sizeof(float))"),
            copy(3 * bytes,
                 "cudaMemcpy(&d_pos[0], &pos[0], nbPositions*3*sizeof(float), "
                 "cudaMemcpyHostToDevice)"),
            stage("pre RectangularPison_func_device"),
            print("nbPos" + std::to_string(points) + "\n" + shape)} +
          launches +
          Steps{stage("RectangularPiston_func_device"),
                copy(2 * bytes,
                     "cudaMemcpy( &data[0], d_arrayr, datasize*2, cudaMemcpyDeviceToHost )"),
                release("cudaFree(d_pos)"), release("cudaFree(d_arrayr)")});
}

inline const Steps smallList = unstructured(153, "grid: 1 64 1\n8192", launch(dim3(1, 64)));

/// A `_device` launcher, for any size.
inline Steps grid_device(const std::string& transformShown, dim3 shape) {
  return in(single,
            Steps{stage("pre RectangularPison_func_device"),
                  print(" _device transform: " + transformShown)} +
                transform + launch(shape) +
                Steps{stage("RectangularPiston_func_device"), release("cudaFree(d_transform)")});
}

inline Steps grid(std::size_t bytes, const std::string& transformShown, dim3 shape) {
  return in(single, Steps{stage("pre RectangularPiston_func"),
                          allocate(bytes, "cudaMalloc((void**)&d_array, datasize)"),
                          print(" transform: " + transformShown)}) +
         grid_device(transformShown, shape) +
         in(single,
            Steps{copy(bytes, "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )"),
                  release("cudaFree(d_array)")});
}

inline const Steps split =
    in(single,
       Steps{stage("pre do_calculate_grid"), print("allocating 612 bytes"),
             allocate(612, "cudaMalloc((void**)&d_arrayr, datasize)"),
             allocate(612, "cudaMalloc((void**)&d_arrayi, datasize)"),
             stage("pre RectangularPiston_func2_device")} +
           transform + launch(gridShape) +
           Steps{stage("RectangularPiston_func2_device"), release("cudaFree(d_transform)"),
                 copy(612, "cudaMemcpy( &datar[0], d_arrayr, datasize, cudaMemcpyDeviceToHost )"),
                 copy(612, "cudaMemcpy( &datai[0], d_arrayi, datasize, cudaMemcpyDeviceToHost )"),
                 release("cudaFree(d_arrayr)"), release("cudaFree(d_arrayi)")});

inline const Steps structured =
    in(single,
       Steps{stage("pre do_calculate_grid"), print("allocating 612 bytes"),
             allocate(1224, "cudaMalloc((void**)&d_arrayr, datasize*2)"),
             allocate(68, "cudaMalloc((void**)&d_posx, sx * sizeof(float))"),
             allocate(12, "cudaMalloc((void**)&d_posy, sy * sizeof(float))"),
             allocate(12, "cudaMalloc((void**)&d_posz, sz * sizeof(float))"),
             copy(68, "cudaMemcpy(&d_posx[0], &posx[0], sx*sizeof(float), cudaMemcpyHostToDevice)"),
             copy(12, "cudaMemcpy(&d_posy[0], &posy[0], sy*sizeof(float), cudaMemcpyHostToDevice)"),
             copy(12, "cudaMemcpy(&d_posz[0], &posz[0], sz*sizeof(float), cudaMemcpyHostToDevice)"),
             stage("pre RectangularPison_func_device")} +
           launch(gridShape) +
           Steps{stage("RectangularPiston_func_device"),
                 copy(1224, "cudaMemcpy( &data[0], d_arrayr, datasize*2, cudaMemcpyDeviceToHost )"),
                 release("cudaFree(d_posz)"), release("cudaFree(d_posy)"),
                 release("cudaFree(d_posx)"), release("cudaFree(d_arrayr)")});

/// The launchers without a transform, of either precision. do_calculate never waits for its kernel.
inline Steps plain(const char* file, std::size_t bytes, const std::string& before,
                   const Steps& launches, const std::string& after) {
  return in(
      file,
      Steps{stage(before), allocate(bytes, "cudaMalloc((void**)&d_array, datasize)")} + launches +
          Steps{stage(after),
                copy(bytes, "cudaMemcpy( &data[0], d_array, datasize, cudaMemcpyDeviceToHost )"),
                release("cudaFree(d_array)")});
}

inline Steps twelveScalars(const char* file, std::size_t bytes) {
  return plain(file, bytes, "pre do_calculate_grid", launch(gridShape), "calculate_grid");
}

inline Steps fromCentre(const char* file, std::size_t bytes) {
  return plain(file, bytes, "pre do_calculate", {unchecked("cudaLaunchKernel", gridShape)},
               "calculate");
}

inline Steps grid_d(std::size_t bytes, dim3 shape) {
  return plain(dual, bytes, "pre do_calculate_grid", transform_d + launch(shape),
               "calculate_grid") +
         in(dual, {release("cudaFree(d_transform)")});
}

inline const Steps split_d = in(
    dual,
    Steps{stage("pre do_calculate_grid"), allocate(1224, "cudaMalloc((void**)&d_arrayr, datasize)"),
          allocate(1224, "cudaMalloc((void**)&d_arrayi, datasize)")} +
        transform_d + launch(gridShape) +
        Steps{stage("calculate_grid"),
              copy(1224, "cudaMemcpy( &datar[0], d_arrayr, datasize, cudaMemcpyDeviceToHost )"),
              copy(1224, "cudaMemcpy( &datai[0], d_arrayi, datasize, cudaMemcpyDeviceToHost )"),
              release("cudaFree(d_arrayr)"), release("cudaFree(d_arrayi)"),
              release("cudaFree(d_transform)")});

/// The steps of a CudaStorage of floats, with the steps that use it between its construction and
/// destruction. A failure of its destructor is not reported.
inline Steps storage(const Steps& between) {
  const char* const file = "src/core/CudaStorage";
  return in(file, {call("cudaMalloc", "cudaMalloc(&device, bytes)"),
                   call("cudaMemcpy", "cudaMemcpy(device, host, bytes, cudaMemcpyHostToDevice)")}) +
         between +
         in(file, {call("cudaMemcpy", "cudaMemcpy(host, device, bytes, cudaMemcpyDeviceToHost)"),
                   unchecked("cudaFree")});
}

}  // namespace checked_calls
