#pragma once

// A function that nvcc compiles for the GPU as well as for the CPU; and one that is always inlined,
// because a call would pass packs through memory.

#if defined(__CUDACC__)
#define PISTONFIELD_HOST_DEVICE __host__ __device__
#else
#define PISTONFIELD_HOST_DEVICE
#endif

#define PISTONFIELD_INLINE PISTONFIELD_HOST_DEVICE __attribute__((always_inline)) inline
