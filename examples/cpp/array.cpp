// Prints the beam of a linear array of 64 elements at 5 MHz in tissue, with a Hann window, at its
// focus and beside it.

#include <pistonfield/arrays.h>

#include <cstdio>

int main() try {
  const double k = 2 * 3.14159265358979 * 5e6 / 1540;  // 1/m
  auto array = pistonfield::linearArray(64, 0.3e-3, 0.27e-3, 5e-3);
  array = weighted(array, pistonfield::apodization("hann", {64}));
  array = focused(array, {5e-3, 0, 30e-3}, k);
  pistonfield::AxesGrid line{{}, {0}, {30e-3}};
  for (int n = 0; n <= 10; ++n) line.x.push_back(n * 1e-3);
  const auto p = pistonfield::Field(array, k).on(line);
  for (std::size_t n = 0; n < p.size(); ++n)
    std::printf("x = %.0f mm: |p| = %.4f\n", line.x[n] * 1e3, std::abs(p[n]));
} catch (const pistonfield::FieldError& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
