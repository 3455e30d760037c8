#include "core/Grid.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "core/Grid3DR.h"
#include "core/ThrowingErrorHandler.h"
#include "support/RecordingHandler.h"

using pistonfield::ErrorHandler;
using pistonfield::Grid3DR;
using pistonfield::GridUnstructured;
using pistonfield::MVector;
using pistonfield::ThrowingErrorHandler;

namespace {

MVector<double, 3> vector(double x, double y, double z) {
  MVector<double, 3> v;
  v[0] = x;
  v[1] = y;
  v[2] = z;
  return v;
}

void expectEqual(MVector<double, 3> actual, MVector<double, 3> expected) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(actual[i], expected[i]) << "component " << i;
}

const Grid3DR<double>::Transform skewed = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0, 0, 0, 1};

TEST(GridTest, UnstructuredGridStartsAtZero) {
  const GridUnstructured<double> grid(4);
  EXPECT_EQ(grid.nbPositions(), 4u);
  for (int i = 0; i < 4; ++i) expectEqual(grid.getPosition(i), vector(0, 0, 0));
}

TEST(GridTest, PositionsAreAPlainVectorWhoseNewElementsAreZero) {
  GridUnstructured<double> grid(1);
  std::vector<MVector<double, 3>>& positions = grid.positions;
  positions.resize(3);
  expectEqual(grid.getPosition(2), vector(0, 0, 0));
  positions[1] = vector(1, 2, 3);
  MVector<double, 3> copy = grid.getPosition(1);
  copy[0] = 7;
  expectEqual(grid.getPosition(1), vector(1, 2, 3));
}

TEST(GridTest, ARegularGridOfMorePointsThan32BitsCountIsRefused) {
  ErrorHandler::setErrorHandler(new ThrowingErrorHandler);
  const unsigned most = std::numeric_limits<unsigned>::max();
  const auto counts = [](unsigned sx, unsigned sy, unsigned sz) {
    return Grid3DR<double>(sx, sy, sz, skewed).nbPositions();
  };
  EXPECT_THROW(counts(65537, 65536, 1), pistonfield::Error);
  EXPECT_THROW(counts(65536, 65536, 1), pistonfield::Error);
  EXPECT_THROW(counts(2048, 2048, 1024), pistonfield::Error);
  EXPECT_THROW(counts(most, most, most), pistonfield::Error);
  EXPECT_THROW(counts(most, 1, 2), pistonfield::Error);
  EXPECT_EQ(counts(65537, 65535, 1), most);
  EXPECT_EQ(counts(1, most, 1), most);
  EXPECT_EQ(counts(most, most, 0), 0u);
  ErrorHandler::setErrorHandler(nullptr);
}

TEST(GridTest, ARefusedGridHasNoPointsWhereTheHandlerReturns) {
  std::vector<support::Failure> failures;
  ErrorHandler::setErrorHandler(new support::ReturningHandler(failures));
  const Grid3DR<double> grid(65537, 65536, 1, skewed);
  EXPECT_EQ(grid.nbPositions(), 0u);
  EXPECT_EQ(grid.sx() + grid.sy() + grid.sz(), 0u);
  EXPECT_EQ(failures.size(), 1u);
  ErrorHandler::setErrorHandler(nullptr);
}

TEST(GridTest, APositionBeyondARegularGridIsRefused) {
  ErrorHandler::setErrorHandler(new ThrowingErrorHandler);
  EXPECT_THROW(Grid3DR<double>(0, 0, 0, skewed).getPosition(0), pistonfield::Error);
  EXPECT_THROW(Grid3DR<double>(3, 2, 2, skewed).getPosition(12), pistonfield::Error);
  EXPECT_THROW(Grid3DR<double>(3, 2, 2, skewed).getPosition(-1), pistonfield::Error);
  ErrorHandler::setErrorHandler(nullptr);
}

TEST(GridTest, RegularGridAppliesItsTransformFirstAxisFastest) {
  Grid3DR<double>::Transform halved = skewed;
  halved[12] = halved[13] = halved[14] = 5;  // not used
  halved[15] = 2;
  const Grid3DR<double> grid(3, 4, 5, skewed), half(3, 4, 5, halved);
  EXPECT_EQ(grid.nbPositions(), 60u);
  for (int l = 0, n = 0; l < 5; ++l)
    for (int j = 0; j < 4; ++j)
      for (int i = 0; i < 3; ++i, ++n) {
        MVector<double, 3> p = vector(4 + 1 * i + 2 * j + 3 * l, 8 + 5 * i + 6 * j + 7 * l,
                                      12 + 9 * i + 10 * j + 11 * l);
        expectEqual(grid.getPosition(n), p);
        expectEqual(half.getPosition(n), vector(p[0] / 2, p[1] / 2, p[2] / 2));
      }
}

TEST(GridTest, RegularGridFromOriginAndSpacing) {
  const Grid3DR<double> grid(2, 3, 4, vector(1, 2, 3), vector(0.5, 0.25, 2));
  EXPECT_EQ(std::vector<unsigned>({grid.sx(), grid.sy(), grid.sz()}),
            std::vector<unsigned>({2, 3, 4}));
  expectEqual(grid.getPosition(0), vector(1, 2, 3));
  expectEqual(grid.getPosition(23), vector(1.5, 2.5, 9));
}

}  // namespace
