#pragma once

namespace pistonfield {

/// Computes the pressure at `count` points on the device, in single precision. `points` holds x, y,
/// z of each point; `l` is the piston's side along y, `s` its side along x, both full lengths, and
/// `k` the wave number; `re` and `im` receive the real and imaginary parts. Progress lines and
/// failures are those of RectangularPiston_func_unstructured.
///
/// If the device works in the host's memory, its kernel converts the numbers list by list.
/// Otherwise this function converts them, which takes 20 bytes per point here and on the device.
void pressuresAt(const double* points, int count, float l, float s, float k, double* re,
                 double* im);

/// The same; requires a device that works in the host's memory. Defined in
/// RectangularPistonCuda.cu, beside its kernel.
void pressuresInHostMemory(const double* points, int count, float l, float s, float k, double* re,
                           double* im);

}  // namespace pistonfield
