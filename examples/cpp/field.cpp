#include <pistonfield/FastNearfield/IntegratorCuda.h>
#include <pistonfield/FastNearfield/RectangularPiston2.h>
#include <pistonfield/core/ThrowingErrorHandler.h>
#include <pistonfield/core/cudahelper.h>

#include <cstddef>
#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// Writes the field of a piston of 5 by 7.5 wavelengths on the plane y = 0, with lengths in
// wavelengths: one line per point, real and imaginary part, x varying fastest.
void writeField(const char* name) {
  const pistonfield::CudaDeviceThread device;  // starts the fastest device for this scope
  setCudaIntegratorParameters("RectangularPiston", 20);
  const pistonfield::RectangularPistonCuda2 piston(7.5, 5, 2 * 3.14159265358979);
  const pistonfield::Grid3DR<double> grid(
      121, 1, 201, {0.125, 0, 0, -7.5, 0, 1, 0, 0, 0, 0, 0.125, 0.25, 0, 0, 0, 1});
  std::vector<float> p(std::size_t{2} * grid.nbPositions());
  piston.compute(p.data(), grid);
  std::ofstream file(name);
  for (std::size_t i = 0; i < p.size(); i += 2) file << p[i] << " " << p[i + 1] << "\n";
  if (!file.flush()) throw std::runtime_error(std::string(name) + " could not be written");
}

}  // namespace

int main() {
  // Throws errors as exceptions; without this line they end the program.
  pistonfield::ErrorHandler::setErrorHandler(new pistonfield::ThrowingErrorHandler);
  try {
    writeField("field.txt");
  } catch (const std::exception& error) {
    std::cerr << "field: " << error.what() << "\n";
    return 1;
  }
}
