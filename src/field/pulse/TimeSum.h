#pragma once

#include <complex>
#include <cstddef>
#include <vector>

namespace pistonfield {

/// Sums Re Σ c_n·exp(iω_n·t) at regular times t.
class TimeSum {
 public:
  /// For up to `most` times at a time, where tables matter.
  TimeSum(const std::vector<double>& omegas, double step, std::size_t most);

  /// Adds the sums at `count` times start, start + step, … to `sums`.
  void add(std::vector<std::complex<double>> coefficients, double start, std::size_t count,
           double* sums) const;

 private:
  static constexpr std::size_t mostInBlock = 64;

  std::vector<double> omegas_;
  std::size_t block_;
  std::vector<double> re_, im_;             // exp(iω_n·m·step) for the times m of a block
  std::vector<std::complex<double>> next_;  // exp(iω_n·block·step)
};

}  // namespace pistonfield
