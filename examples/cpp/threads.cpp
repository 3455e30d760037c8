// Prints the pressure of a piston of 5 by 7.5 wavelengths at eight distances on its axis, each
// computed on a thread of its own, to 1e-4. An error on any of the threads arrives here as an
// exception.

#include <pistonfield/field.h>

#include <cstdio>
#include <future>

int main() try {
  const double lambda = 1.5e-3;  // m: of 1 MHz in water
  const pistonfield::Field field({{5 * lambda, 7.5 * lambda}}, 2 * 3.14159265358979 / lambda);
  std::vector<std::future<std::complex<double>>> p;
  for (int n = 1; n <= 8; ++n)
    p.push_back(std::async(std::launch::async, [&, n] { return field.at({{0, 0, n * 0.01}})[0]; }));
  for (std::size_t n = 0; n < p.size(); ++n)
    std::printf("z = %zu mm: |p| = %.4f\n", 10 * (n + 1), std::abs(p[n].get()));
} catch (const pistonfield::FieldError& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
