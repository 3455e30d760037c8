#include <complex>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "field/echo.h"
#include "field/field.h"
#include "field/lens.h"
#include "field/pulse.h"

// print_fields <table>
//
// Computes the fields of a table in the form of tests/data/fields.txt. Writes for each a line
// "field <name> <number of points>", a line "used <least order> <most order> <single> <precise>
// <nodes> <bound>", and a line with the real and the imaginary part of each pressure. For a pulse
// these are "used <start> <rate> <number of times> <bound> <nodes> <frequencies>", and each
// pressure or echo. The bits of floating-point numbers are written as 16 hexadecimal digits.

namespace {

using pistonfield::Field;

struct Case {
  std::string name;
  std::complex<double> k = 0;
  pistonfield::FieldOptions options;
  std::vector<Field::Piston> pistons;
  std::vector<double> lens;                   // its focus and tolerance, or none
  std::vector<double> medium, burst, delays;  // of a pulse
  std::vector<Field::Piston> receivers;       // of an echo
  pistonfield::AxesGrid grid;
  std::vector<pistonfield::Position> points;
};

Field::Piston pistonOf(const std::vector<double>& numbers) {
  Field::Piston piston;
  piston.width = numbers.at(0);
  piston.height = numbers.at(1);
  for (std::size_t n = 0; n < 3; ++n) piston.centre[n] = numbers.at(2 + n);
  for (std::size_t n = 0; n < 9; ++n) piston.axes[n / 3][n % 3] = numbers.at(5 + n);
  piston.weight = {numbers.at(14), numbers.at(15)};
  return piston;
}

std::vector<Case> read(const char* name) {
  std::vector<Case> cases;
  std::ifstream file(name);
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string word;
    if (!(words >> word) || word == "#") continue;
    if (word == "field") {
      cases.emplace_back();
      words >> cases.back().name;
      continue;
    }
    std::vector<double> numbers;
    for (std::string number; words >> number;) numbers.push_back(std::stod(number));
    Case& last = cases.back();
    if (word == "k") last.k = {numbers.at(0), numbers.size() > 1 ? numbers[1] : 0};
    if (word == "tolerance") last.options.tolerance = numbers.at(0);
    if (word == "piston") last.pistons.push_back(pistonOf(numbers));
    if (word == "lens") last.lens = numbers;
    if (word == "medium") last.medium = numbers;
    if (word == "burst") last.burst = numbers;
    if (word == "delays") last.delays = numbers;
    if (word == "receiver") last.receivers.push_back(pistonOf(numbers));
    if (word == "x") last.grid.x = numbers;
    if (word == "y") last.grid.y = numbers;
    if (word == "z") last.grid.z = numbers;
    if (word == "point") last.points.push_back({numbers.at(0), numbers.at(1), numbers.at(2)});
  }
  return cases;
}

std::string bits(double value) {
  std::uint64_t integer = 0;
  std::memcpy(&integer, &value, sizeof value);
  char text[17] = "";
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(integer));
  return text;
}

template <class Source>
void printAgainstTime(const Case& each, const Source& source) {
  const pistonfield::TimeAxis times = source.times(each.points, each.burst.at(2));
  pistonfield::PulseOptions options;
  options.tolerance = each.options.tolerance;
  pistonfield::PulseReport report;
  const std::vector<double> values = source.at(each.points, times, options, &report);
  std::cout << "field " << each.name << " " << each.points.size() << "\nused " << bits(times.start)
            << " " << bits(times.rate) << " " << times.count << " " << bits(report.bound) << " "
            << bits(report.nodes) << " " << report.frequencies << "\n";
  for (const double value : values) std::cout << bits(value) << "\n";
}

void printPulse(const Case& each) {
  std::vector<pistonfield::DelayedPiston> pistons = pistonfield::delayed(each.pistons);
  for (std::size_t n = 0; n < pistons.size(); ++n) pistons[n].delay = each.delays.at(n);
  pistonfield::Medium medium;
  medium.speed = each.medium.at(0);
  medium.attenuation = each.medium.at(1);
  medium.exponent = each.medium.at(2);
  medium.reference = each.medium.at(3);
  const pistonfield::Excitation excitation =
      pistonfield::toneBurst(each.burst.at(0), each.burst.at(1), each.burst.at(2));
  if (each.receivers.empty())
    printAgainstTime(each, pistonfield::Pulse(pistons, medium, excitation));
  else
    printAgainstTime(
        each, pistonfield::Echo(pistons, pistonfield::delayed(each.receivers), medium, excitation));
}

}  // namespace

int main(int, char** arguments) {
  for (const Case& each : read(arguments[1])) {
    if (!each.burst.empty()) {
      printPulse(each);
      continue;
    }
    const Field field(each.lens.empty() ? each.pistons
                                        : pistonfield::lensed(each.pistons, each.lens.at(0), each.k,
                                                              each.lens.at(1)),
                      each.k);
    pistonfield::FieldReport report;
    const auto pressures = each.points.empty() ? field.on(each.grid, each.options, &report)
                                               : field.at(each.points, each.options, &report);
    std::cout << "field " << each.name << " " << pressures.size() << "\nused " << report.leastOrder
              << " " << report.mostOrder << " " << report.single << " " << report.precise << " "
              << bits(report.nodes) << " " << bits(report.bound) << "\n";
    for (const std::complex<double>& p : pressures)
      std::cout << bits(p.real()) << " " << bits(p.imag()) << "\n";
  }
}
