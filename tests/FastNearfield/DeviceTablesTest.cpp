#include <algorithm>
#include <array>
#include <vector>

#include "FastNearfield/GaussLegendre.h"
#include "FastNearfield/IntegratorCuda.h"
#include "support/DeviceTest.h"

// The tables that the kernels read on the emulation device.
extern float global_RectangularPiston_float_x[256];
extern float global_RectangularPiston_float_w[256];
extern int global_RectangularPiston_float_N;
extern double global_dpRectangularPiston_double_x[256];
extern double global_dpRectangularPiston_double_w[256];
extern int global_dpRectangularPiston_double_N;

using support::Failure;
using support::failureOf;

namespace {

constexpr const char* model = "RectangularPiston";

class DeviceTablesTest : public support::EmulationTest {
 protected:
  const std::vector<float> x = {-0.5f, -0.25f, 0.0f};
  const std::vector<float> w = {0.25f, 0.5f, 0.75f};
  const std::vector<double> xd = {-0.5, -0.25, 0.0};
  const std::vector<double> wd = {0.25, 0.5, 0.75};
};

void expectTablesOfOrder(int n) {
  std::vector<double> x(static_cast<std::size_t>(n)), w(static_cast<std::size_t>(n));
  pistonfield::legendre_compute(n, x.data(), w.data());
  EXPECT_EQ(global_RectangularPiston_float_N, n);
  EXPECT_EQ(global_dpRectangularPiston_double_N, n);
  const auto M = (static_cast<std::size_t>(n) + 1) / 2;
  for (std::size_t i = 0; i < 256; ++i) {
    EXPECT_EQ(global_dpRectangularPiston_double_x[i], i < M ? x[i] : 0.0) << i;
    EXPECT_EQ(global_dpRectangularPiston_double_w[i], i < M ? w[i] : 0.0) << i;
    EXPECT_EQ(global_RectangularPiston_float_x[i], i < M ? static_cast<float>(x[i]) : 0.0f) << i;
    EXPECT_EQ(global_RectangularPiston_float_w[i], i < M ? static_cast<float>(w[i]) : 0.0f) << i;
  }
}

TEST_F(DeviceTablesTest, AnOrderStoresItsNodesUpToTheCentreAndZeros) {
  for (const int order : {512, 1, 7, 10}) {
    setCudaIntegratorParameters(model, order);
    expectTablesOfOrder(order);
    const auto last = static_cast<std::size_t>(order + 1) / 2 - 1;
    if (order % 2 == 1)
      EXPECT_EQ(global_RectangularPiston_float_x[last], 0.0f) << order;
    else
      EXPECT_LT(global_RectangularPiston_float_x[last], 0.0f) << order;
    cudaDeviceReset();
  }
}

TEST_F(DeviceTablesTest, OrdersOutOfRangeAreRefusedBeforeAnyCopyAndWithoutComputingThem) {
  const auto failure = [](int order) {
    return failureOf([=] { setCudaIntegratorParameters(model, order); });
  };
  device.recordCalls();
  for (const int order : {513, 2147483647}) {
    EXPECT_EQ(failure(order).condition, "N <= 512 && N>0");
    EXPECT_EQ(failure(order).file, "src/FastNearfield/RectangularPistonCuda.dp");
    const std::string line = "setting order " + std::to_string(order) +
                             "elements: " + std::to_string(order / 2 + 1) +
                             "\nset weights double\n";
    EXPECT_EQ(printed(), line + line);
  }
  for (const int order : {0, -3, -2147483647 - 1}) {
    EXPECT_EQ(failure(order).condition, "order>0");
    EXPECT_EQ(failure(order).file, "src/FastNearfield/IntegratorCuda");
  }
  EXPECT_EQ(printed(), "");
  for (const std::string& function : functionsCalled()) EXPECT_NE(function, "cudaMemcpyToSymbol");
}

TEST_F(DeviceTablesTest, ReadsOnlyTheFirstHalfOfACallersTable) {
  // Exactly (N + 1)/2 entries, so that a sanitizer sees any read beyond them.
  const std::unique_ptr<float[]> abscissas(new float[3]{-0.5f, -0.25f, 0.0f});
  const std::unique_ptr<float[]> weights(new float[3]{0.25f, 0.5f, 0.75f});
  device.recordCalls();
  setIntegratorWeightsSym(model, abscissas.get(), weights.get(), 5);
  EXPECT_EQ(global_RectangularPiston_float_N, 5);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(global_RectangularPiston_float_x[i], x[i]);
    EXPECT_EQ(global_RectangularPiston_float_w[i], w[i]);
  }
  std::vector<std::size_t> copies;
  for (const pistonfield::emulation::Call& call : device.calls())
    if (call.bytes > 0) copies.push_back(call.bytes);
  EXPECT_EQ(copies, (std::vector<std::size_t>{12, 12, 4}));
}

TEST_F(DeviceTablesTest, TheDoubleTableIsLoadedByItself) {
  setIntegratorWeightsSym_d(model, xd.data(), wd.data(), 5);
  EXPECT_EQ(global_dpRectangularPiston_double_N, 5);
  EXPECT_EQ(global_dpRectangularPiston_double_x[1], -0.25);
  EXPECT_EQ(global_dpRectangularPiston_double_w[2], 0.75);
  EXPECT_EQ(global_RectangularPiston_float_N, 0);
  EXPECT_EQ(printed(), "set weights double\n-0.5\n");
}

TEST_F(DeviceTablesTest, ATableSizeOutOfRangeIsRefusedAndAnEmptyTableNotRead) {
  for (const int N : {600, 513, 0, -1}) {
    const Failure single =
        failureOf([&] { setIntegratorWeightsSym(model, N > 0 ? x.data() : nullptr, nullptr, N); });
    EXPECT_EQ(single.condition, "N <= 512 && N>0");
    EXPECT_EQ(single.file, "src/FastNearfield/RectangularPistonCuda");
    // The first abscissa comes before the check.
    EXPECT_EQ(printed(), N > 0 ? "set weights float\n-0.5\n" : "set weights float\n");
    const Failure dual = failureOf([&] { setIntegratorWeightsSym_d(model, nullptr, nullptr, N); });
    EXPECT_EQ(dual.condition, "N <= 512 && N>0");
    EXPECT_EQ(dual.file, "src/FastNearfield/RectangularPistonCuda.dp");
    EXPECT_EQ(printed(), "set weights double\n");
  }
}

TEST_F(DeviceTablesTest, AHandlerThatReturnsLeavesNothingReadOrWritten) {
  std::vector<Failure> failures;
  pistonfield::ErrorHandler::setErrorHandler(new support::ReturningHandler(failures));
  setCudaIntegratorParameters(model, 0);
  setCudaIntegratorParameters(model, 513);
  setIntegratorWeightsSym(model, nullptr, nullptr, 0);
  EXPECT_EQ(failures.size(), 3u);
  EXPECT_EQ(global_RectangularPiston_float_N, 0);
}

TEST_F(DeviceTablesTest, WithoutDoubleSupportTheErrorIsClearedAndTheRunGoesOnInSinglePrecision) {
  device.failCall("cudaMemcpyToSymbol", 1, cudaErrorInvalidSymbol, false);
  device.recordCalls();
  testing::internal::CaptureStderr();
  EXPECT_EQ(failureOf([] { setCudaIntegratorParameters(model, 3); }).condition, "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Support for double not found\n");
  EXPECT_EQ(global_dpRectangularPiston_double_N, 0);
  EXPECT_EQ(global_dpRectangularPiston_double_w[0], 0.0);
  EXPECT_EQ(global_RectangularPiston_float_N, 3);
  const std::vector<std::string> functions = functionsCalled();
  const auto copy = std::find(functions.begin(), functions.end(), "cudaMemcpyToSymbol");
  ASSERT_LT(copy + 2, functions.end());
  EXPECT_EQ(copy[1], "cudaGetLastError");  // which clears it; then single precision begins
  EXPECT_EQ(std::count(functions.begin(), functions.end(), "cudaMemcpyToSymbol"), 4);
}

TEST_F(DeviceTablesTest, AnUnknownModelHasNoSymbols) {
  const Failure failure =
      failureOf([&] { setIntegratorWeightsSym("Disc", x.data(), w.data(), 5); });
  EXPECT_EQ(failure.condition,
            "Cuda error when calling cudaMemcpyToSymbol( buf, data_x, datasize ): "
            "invalid device symbol");
  EXPECT_EQ(printed(), "set weights float\n-0.5\nsymbol: \"global_Disc_float_x\"\n");
  cudaGetLastError();  // which a call check leaves pending
  testing::internal::CaptureStderr();
  setIntegratorWeightsSym_d("Disc", xd.data(), wd.data(), 5);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Support for double not found\n");
}

}  // namespace
