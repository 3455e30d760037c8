#include <FastNearfield/IntegratorCuda.h>
#include <FastNearfield/RectangularPiston2.h>
#include <core/cudahelper.h>

#include <cstddef>
#include <fstream>
#include <vector>

// The field of a piston of 5 by 7.5 wavelengths on the plane y = 0, lengths in wavelengths: one
// line a point, real and imaginary part, x varying fastest.
int main() {
  const pistonfield::CudaDeviceThread device;  // the fastest device, for this scope
  setCudaIntegratorParameters("RectangularPiston", 20);
  const pistonfield::RectangularPistonCuda2 piston(7.5, 5, 2 * 3.14159265358979);
  const pistonfield::Grid3DR<double> grid(
      121, 1, 201, {0.125, 0, 0, -7.5, 0, 1, 0, 0, 0, 0, 0.125, 0.25, 0, 0, 0, 1});
  std::vector<float> p(std::size_t{2} * grid.nbPositions());
  piston.compute(p.data(), grid);
  std::ofstream file("field.txt");
  for (std::size_t i = 0; i < p.size(); i += 2) file << p[i] << " " << p[i + 1] << "\n";
}
