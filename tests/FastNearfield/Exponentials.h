#pragma once

/// The functions of Exponential.h, for one set of packs.
struct Exponentials {
  /// Write exp(x) and exp(x) − 1 of `count` numbers, a multiple of 16.
  void (*inFloats)(const float* x, float* exponentials, float* minusOne, int count);
  void (*inDoubles)(const double* x, double* exponentials, double* minusOne, int count);
};

/// They need the processor's support.
extern const Exponentials exponentialsOfSse2, exponentialsOfAvx2, exponentialsOfAvx512,
    exponentialsOfNeon, exponentialsOfOneLane;
