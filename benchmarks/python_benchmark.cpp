#include <chrono>
#include <complex>
#include <cstddef>
#include <ctime>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "field/field.h"

// python_benchmark <points> <axis>
//
// The side of C++ in python_benchmark.py. Reads the doubles of two files: the points of a list, and
// the axis that is x and z of a grid in the plane y = 0. Then computes the list or the grid for
// each line "list" or "grid", and writes the seconds that it took, the processor's seconds on all
// cores, and the last pressure.

namespace {

std::vector<double> doubles(const char* name) {
  std::ifstream file(name, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  std::vector<double> numbers(bytes.size() / sizeof(double));
  bytes.copy(reinterpret_cast<char*>(numbers.data()), numbers.size() * sizeof(double));
  return numbers;
}

}  // namespace

int main(int, char** arguments) {
  using Clock = std::chrono::steady_clock;
  const std::vector<double> coordinates = doubles(arguments[1]), axis = doubles(arguments[2]);
  std::vector<pistonfield::Position> points;
  for (std::size_t n = 0; n + 2 < coordinates.size(); n += 3)
    points.push_back({coordinates[n], coordinates[n + 1], coordinates[n + 2]});
  const double k = 6.283185307179586;
  std::cout.precision(17);
  for (std::string what; std::getline(std::cin, what);) {
    const Clock::time_point start = Clock::now();
    const std::clock_t processorStart = std::clock();
    const pistonfield::Field field({{5, 7.5}}, k);
    const std::vector<std::complex<double>> p =
        what == "list" ? field.at(points) : field.on(pistonfield::AxesGrid{axis, {0}, axis});
    const std::chrono::duration<double> seconds = Clock::now() - start;
    const auto processor =
        static_cast<double>(std::clock() - processorStart) / static_cast<double>(CLOCKS_PER_SEC);
    std::cout << seconds.count() << " " << processor << " " << p.back().real() << " "
              << p.back().imag() << std::endl;
  }
}
