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
  /// Makes the nth copy to a symbol fail, counted from now.
  void failCopy(int nth, cudaError_t error) {
    device.failCall("cudaMemcpyToSymbol", nth, error, false);
  }

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

TEST_F(DeviceTablesTest, Order1StoresOneNode) {
  setCudaIntegratorParameters(model, 1);
  expectTablesOfOrder(1);
  EXPECT_EQ(global_RectangularPiston_float_x[0], 0.0f);
  EXPECT_EQ(global_RectangularPiston_float_w[0], 2.0f);
}

TEST_F(DeviceTablesTest, OddOrderStoresTheCentreNodeLast) {
  setCudaIntegratorParameters(model, 7);
  expectTablesOfOrder(7);
  EXPECT_LT(global_RectangularPiston_float_x[2], 0.0f);
  EXPECT_EQ(global_RectangularPiston_float_x[3], 0.0f);
}

TEST_F(DeviceTablesTest, EvenOrderStoresExactlyHalf) {
  setCudaIntegratorParameters(model, 10);
  expectTablesOfOrder(10);
  EXPECT_LT(global_RectangularPiston_float_x[4], 0.0f);
}

TEST_F(DeviceTablesTest, Order512FillsTheTables) {
  setCudaIntegratorParameters(model, 512);
  expectTablesOfOrder(512);
}

TEST_F(DeviceTablesTest, Order513IsRefusedBeforeAnyCopy) {
  device.recordCalls();
  const Failure failure = failureOf([] { setCudaIntegratorParameters(model, 513); });
  EXPECT_EQ(failure.condition, "N <= 512 && N>0");
  EXPECT_EQ(failure.file, "src/FastNearfield/RectangularPistonCuda.dp");
  EXPECT_EQ(output(), "setting order 513elements: 257\nset weights double\n");
  captureAgain();
  for (const pistonfield::emulation::Call& call : device.calls())
    EXPECT_STRNE(call.function, "cudaMemcpyToSymbol");
}

TEST_F(DeviceTablesTest, AHugeOrderIsRefusedWithoutComputingIt) {
  const Failure failure = failureOf([] { setCudaIntegratorParameters(model, 2147483647); });
  EXPECT_EQ(failure.condition, "N <= 512 && N>0");
  EXPECT_EQ(output(), "setting order 2147483647elements: 1073741824\nset weights double\n");
  captureAgain();
}

TEST_F(DeviceTablesTest, OrdersBelowOneAreRefused) {
  for (const int order : {0, -3, -2147483647 - 1}) {
    const Failure failure = failureOf([&] { setCudaIntegratorParameters(model, order); });
    EXPECT_EQ(failure.condition, "order>0");
    EXPECT_EQ(failure.file, "src/FastNearfield/IntegratorCuda");
  }
  EXPECT_EQ(output(), "");
  captureAgain();
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
  EXPECT_EQ(output(), "set weights double\n-0.5\n");
  captureAgain();
}

TEST_F(DeviceTablesTest, ATableSizeOutOfRangeIsRefusedInBothPrecisions) {
  const std::vector<float> long_x(300, -0.5f);
  const Failure single =
      failureOf([&] { setIntegratorWeightsSym(model, long_x.data(), long_x.data(), 600); });
  EXPECT_EQ(single.condition, "N <= 512 && N>0");
  EXPECT_EQ(single.file, "src/FastNearfield/RectangularPistonCuda");
  EXPECT_EQ(output(), "set weights float\n-0.5\n");  // the abscissa is printed before the check
  captureAgain();

  const Failure dual =
      failureOf([&] { setIntegratorWeightsSym_d(model, xd.data(), wd.data(), 513); });
  EXPECT_EQ(dual.condition, "N <= 512 && N>0");
  EXPECT_EQ(dual.file, "src/FastNearfield/RectangularPistonCuda.dp");
  EXPECT_EQ(output(), "set weights double\n");
  captureAgain();
}

TEST_F(DeviceTablesTest, AnEmptyTableIsRefusedWithoutReadingIt) {
  for (const int N : {0, -1}) {
    EXPECT_EQ(failureOf([&] { setIntegratorWeightsSym(model, nullptr, nullptr, N); }).condition,
              "N <= 512 && N>0");
    EXPECT_EQ(failureOf([&] { setIntegratorWeightsSym_d(model, nullptr, nullptr, N); }).condition,
              "N <= 512 && N>0");
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

TEST_F(DeviceTablesTest, WithoutDoubleSupportTheRunGoesOnInSinglePrecision) {
  failCopy(1, cudaErrorInvalidSymbol);
  testing::internal::CaptureStderr();
  EXPECT_EQ(failureOf([] { setCudaIntegratorParameters(model, 3); }).condition, "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Support for double not found\n");
  EXPECT_EQ(global_dpRectangularPiston_double_N, 0);
  EXPECT_EQ(global_dpRectangularPiston_double_w[0], 0.0);
  EXPECT_EQ(global_RectangularPiston_float_N, 3);
}

TEST_F(DeviceTablesTest, WithoutDoubleSupportTheErrorIsClearedAndNothingElseDone) {
  failCopy(1, cudaErrorInvalidSymbol);
  device.recordCalls();
  testing::internal::CaptureStderr();
  setIntegratorWeightsSym_d(model, xd.data(), wd.data(), 5);
  testing::internal::GetCapturedStderr();
  std::vector<std::string> functions;
  for (const pistonfield::emulation::Call& call : device.calls())
    functions.emplace_back(call.function);
  EXPECT_EQ(functions, (std::vector<std::string>{"cudaGetLastError", "cudaMemcpyToSymbol",
                                                 "cudaGetLastError"}));
}

TEST_F(DeviceTablesTest, AnUnknownModelHasNoSymbols) {
  const Failure failure =
      failureOf([&] { setIntegratorWeightsSym("Disc", x.data(), w.data(), 5); });
  EXPECT_EQ(failure.condition,
            "Cuda error when calling cudaMemcpyToSymbol( buf, data_x, datasize ): "
            "invalid device symbol");
  EXPECT_EQ(output(), "set weights float\n-0.5\nsymbol: \"global_Disc_float_x\"\n");
  captureAgain();
  cudaGetLastError();  // the check of a call leaves it pending
  testing::internal::CaptureStderr();
  setIntegratorWeightsSym_d("Disc", xd.data(), wd.data(), 5);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Support for double not found\n");
}

}  // namespace
