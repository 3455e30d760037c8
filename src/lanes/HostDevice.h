#pragma once

// PISTONFIELD_HOST_DEVICE: nvcc compiles the function for the GPU and for the CPU.
// PISTONFIELD_INLINE: also always inlines it, because a call would pass packs through memory.

#if defined(__CUDACC__)
#define PISTONFIELD_HOST_DEVICE __host__ __device__
#else
#define PISTONFIELD_HOST_DEVICE
#endif

#define PISTONFIELD_INLINE PISTONFIELD_HOST_DEVICE __attribute__((always_inline)) inline
