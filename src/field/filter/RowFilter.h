#pragma once

#include "lanes/InstructionSet.h"

namespace pistonfield {

/// Rows are filtered side by side: the numbers of a column are neighbours in memory.
constexpr int rowsTogether = 32;

/// The sum of factors[n] times the column `columns[n]`.
template <class Real>
struct RowFilter {
  int count;
  const int* columns;
  const Real* re;  ///< of the factors
  const Real* im;  ///< nullptr if the factors are real
};

/// Adds the filter's sum to a column of `rowsTogether` numbers. The real and the imaginary parts of
/// columns follow each other in `re` and in `im`.
///
/// The largest error is filterRounding units of Real's precision, times the sum of the factors'
/// magnitudes, times the largest magnitude in the columns. It includes the rounding of factors and
/// columns to Real.
template <class Real>
using AddFiltered = void(const RowFilter<Real>& filter, const Real* re, const Real* im,
                         double* sumRe, double* sumIm);

/// How many products are added in the precision of Real.
constexpr int filterBlock = 16;

constexpr double filterRounding = 1.5 * (filterBlock + 4);  // 1.5 > √2, for both parts

/// `rowsTogether` complex numbers.
struct Column {
  double *re, *im;
};

/// Multiplies a column by the phases, and the phases by the steps.
using TurnColumn = void(const Column& column, const Column& phases, const Column& steps);

struct AddFilteredInPacks {
  AddFiltered<float>* single;
  AddFiltered<double>* precise;
  TurnColumn* turn;
};

/// Returns the functions for an instruction set. This machine must have the set.
AddFilteredInPacks addFiltered(InstructionSet set);

/// The functions, each set's in a file that is compiled for it.
extern const AddFilteredInPacks addFilteredSse2, addFilteredAvx2, addFilteredAvx512,
    addFilteredNeon;

}  // namespace pistonfield
