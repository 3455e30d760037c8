# Chooses the device of the build. Writes its name (first line) and the reason (second line) to
# <build>/device.txt.

set(PISTONFIELD_DEVICE auto CACHE STRING
    "The device to build for: cuda, emulation, or auto (cuda if a toolkit and a usable GPU are found)")
set_property(CACHE PISTONFIELD_DEVICE PROPERTY STRINGS auto cuda emulation)

set(emulation_name "Device Emulation (CPU)")

if(PISTONFIELD_DEVICE STREQUAL "cuda")
  set(PISTONFIELD_USE_CUDA ON)
  set(device_name "CUDA")
  set(device_reason "set by PISTONFIELD_DEVICE=cuda")
elseif(PISTONFIELD_DEVICE STREQUAL "emulation")
  set(PISTONFIELD_USE_CUDA OFF)
  set(device_name "${emulation_name}")
  set(device_reason "set by PISTONFIELD_DEVICE=emulation")
elseif(PISTONFIELD_DEVICE STREQUAL "auto")
  set(PISTONFIELD_USE_CUDA OFF)
  set(device_name "${emulation_name}")
  find_package(CUDAToolkit QUIET)
  if(NOT CUDAToolkit_NVCC_EXECUTABLE)
    set(device_reason "no CUDA toolkit was found")
  else()
    try_run(gpu_status gpu_compiled ${PROJECT_BINARY_DIR}/usable_gpu
            ${CMAKE_CURRENT_LIST_DIR}/usable_gpu.cpp
            LINK_LIBRARIES CUDA::cudart_static
            RUN_OUTPUT_VARIABLE gpu_answer)
    string(STRIP "${gpu_answer}" gpu_answer)
    if(gpu_compiled AND gpu_status EQUAL 0)
      set(PISTONFIELD_USE_CUDA ON)
      set(device_name "${gpu_answer}")
      set(device_reason "a CUDA toolkit and a usable GPU were found")
    else()
      set(device_reason "a CUDA toolkit was found, but no usable GPU: ${gpu_answer}")
    endif()
  endif()
else()
  message(FATAL_ERROR "PISTONFIELD_DEVICE is \"${PISTONFIELD_DEVICE}\"; it must be auto, cuda or emulation")
endif()

if(PISTONFIELD_USE_CUDA)
  if(NOT DEFINED CMAKE_CUDA_ARCHITECTURES)
    set(CMAKE_CUDA_ARCHITECTURES all) # and PTX for the newest major architecture
  endif()
  set(CMAKE_CUDA_STANDARD 17)
  set(CMAKE_CUDA_STANDARD_REQUIRED ON)
  set(CMAKE_CUDA_RUNTIME_LIBRARY Static)
  find_package(CUDAToolkit REQUIRED)
  if(NOT DEFINED CMAKE_CUDA_COMPILER AND CUDAToolkit_NVCC_EXECUTABLE)
    set(CMAKE_CUDA_COMPILER ${CUDAToolkit_NVCC_EXECUTABLE}) # which need not be on the PATH
  endif()
  enable_language(CUDA)
endif()

message(STATUS "Device: ${device_name} (${device_reason})")
file(WRITE ${PROJECT_BINARY_DIR}/device.txt "${device_name}\n${device_reason}\n")
