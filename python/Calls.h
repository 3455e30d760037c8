#pragma once

#include <cstddef>
#include <vector>

#include "Work.h"
#include "field/field.h"

// The functions that pistonfield/_core.py calls through ctypes use nothing of Python, so that one
// library serves all its versions. Their callers have checked types and shapes. Here is what they
// share.

#ifdef _WIN32
#define PISTONFIELD_EXPORT __declspec(dllexport)
#else
#define PISTONFIELD_EXPORT __attribute__((visibility("default")))
#endif

namespace pistonfield {

/// Width, height, centre, the directions of the piston's own x, y and z, and the real and the
/// imaginary part of its weight.
constexpr std::size_t numbersOfPiston = 16;

inline std::vector<Field::Piston> pistonsOf(const double* rows, std::size_t count) {
  std::vector<Field::Piston> pistons(count);
  for (Field::Piston& piston : pistons) {
    piston.width = rows[0];
    piston.height = rows[1];
    for (std::size_t n = 0; n < 3; ++n) piston.centre[n] = rows[2 + n];
    for (std::size_t n = 0; n < 9; ++n) piston.axes[n / 3][n % 3] = rows[5 + n];
    piston.weight = {rows[14], rows[15]};
    rows += numbersOfPiston;
  }
  return pistons;
}

inline std::vector<double> rowsOf(const std::vector<Field::Piston>& pistons) {
  std::vector<double> rows;
  rows.reserve(numbersOfPiston * pistons.size());
  for (const Field::Piston& piston : pistons) {
    rows.insert(rows.end(), {piston.width, piston.height});
    rows.insert(rows.end(), piston.centre.begin(), piston.centre.end());
    for (const Position& axis : piston.axes) rows.insert(rows.end(), axis.begin(), axis.end());
    rows.insert(rows.end(), {piston.weight.real(), piston.weight.imag()});
  }
  return rows;
}

inline const Position* positionsOf(const double* points) {
  static_assert(sizeof(Position) == 3 * sizeof(double));
  return reinterpret_cast<const Position*>(points);
}

/// Sets the numbers that compute() returns.
template <class Compute>
void runShort(Work& work, Compute compute) {
  work.run(true, [&] { work.setResult(compute()); });
}

}  // namespace pistonfield
