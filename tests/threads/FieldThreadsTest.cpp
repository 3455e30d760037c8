#include <gtest/gtest.h>

#include <complex>
#include <cstddef>
#include <string>
#include <thread>
#include <vector>

#include "field/field.h"

// Any number of threads may use one Field, or several, at once, and each gets the same bits as
// alone.

using pistonfield::AffineGrid;
using pistonfield::Field;
using pistonfield::FieldError;
using pistonfield::FieldOptions;
using Piston = pistonfield::Field::Piston;

namespace {

constexpr std::size_t count = 8;
constexpr double k = 6.28;

std::vector<Piston> pistons(std::size_t n) {
  Piston one;
  one.width = 2 + static_cast<double>(n);
  one.height = 3;
  Piston other = one;
  other.centre = {4, 0, 1};
  other.weight = {0.5, -1};
  return {one, other};
}

std::vector<std::complex<double>> pressures(const Field& field, const FieldOptions& options) {
  AffineGrid grid;
  grid.origin = {-4, 0.5, 0.25};
  grid.steps[0] = {0.25, 0, 0};
  grid.steps[2] = {0, 0, 0.5};
  grid.counts = {33, 1, 64};
  return field.on(grid, options);
}

FieldOptions options(std::size_t n) {
  FieldOptions result;
  if (n % 4 == 3)
    result.order = 7;
  else
    result.tolerance = n % 4 == 0 ? 1e-2 : n % 4 == 1 ? 1e-4 : 1e-9;
  return result;
}

/// Calls fieldOf(n) on thread n of eight, with various options.
template <class FieldOf>
void expectAsAlone(FieldOf fieldOf) {
  std::vector<std::vector<std::complex<double>>> together(count), alone(count);
  std::vector<std::thread> threads;
  for (std::size_t n = 0; n < count; ++n)
    threads.emplace_back([&, n] {
      for (int round = 0; round < 3; ++round) together[n] = pressures(fieldOf(n), options(n));
    });
  for (std::thread& thread : threads) thread.join();
  for (std::size_t n = 0; n < count; ++n) alone[n] = pressures(fieldOf(n), options(n));
  for (std::size_t n = 0; n < count; ++n) EXPECT_TRUE(together[n] == alone[n]) << "thread " << n;
}

TEST(FieldThreadsTest, AllWithOneField) {
  const Field field(pistons(0), k);
  expectAsAlone([&](std::size_t /*n*/) -> const Field& { return field; });
}

TEST(FieldThreadsTest, EachWithAFieldOfItsOwn) {
  expectAsAlone([](std::size_t n) { return Field(pistons(n), k); });
}

TEST(FieldThreadsTest, AnErrorOnOneThreadDoesNotReachTheOthers) {
  const Field field(pistons(0), k);
  std::vector<std::string> errors(count);
  std::vector<std::thread> threads;
  for (std::size_t n = 0; n < count; ++n)
    threads.emplace_back([&, n] {
      FieldOptions invalid;
      invalid.tolerance = n % 2 == 0 ? 0 : 1e-4;
      try {
        pressures(field, invalid);
      } catch (const FieldError& error) {
        errors[n] = error.what();
      }
    });
  for (std::thread& thread : threads) thread.join();
  for (std::size_t n = 0; n < count; ++n) EXPECT_EQ(errors[n].empty(), n % 2 == 1) << errors[n];
}

}  // namespace
