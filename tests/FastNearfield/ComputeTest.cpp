#include <cmath>
#include <complex>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPiston2.h"
#include "core/RuleOwner.h"
#include "core/cudahelper.h"
#include "support/DeviceTest.h"

using pistonfield::CudaDeviceThread;
using pistonfield::CudaStorage;
using pistonfield::Grid3DR;
using pistonfield::RectangularPistonCuda2;
using support::Failure;
using support::failureOf;

namespace {

const Grid3DR<double> grid(3, 2, 2, {0.5, 0, 0, -0.75, 0, 0.25, 0, 0.5, 0, 0, 2, 1, 0, 0, 0, 1});
constexpr std::size_t values = 24;  // real and imaginary part of 12 points

class ComputeTest : public support::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    if (IsSkipped()) return;
    setCudaIntegratorParameters("RectangularPiston", 64);
    printed();
  }

  template <class T>
  std::vector<T> computed(bool useGPU) {
    piston.useGPU = useGPU;
    std::vector<T> out(values, T(-7));
    piston.compute(out.data(), grid);
    return out;
  }

  template <class T, class U>
  static void expectNear(const T* actual, const U* expected, double tolerance) {
    for (std::size_t i = 0; i < values; ++i)
      EXPECT_NEAR(static_cast<double>(actual[i]), static_cast<double>(expected[i]), tolerance) << i;
  }

  RectangularPistonCuda2 piston{2, 1, 5};
};

TEST_F(ComputeTest, AllFourWaysAgree) {
  const std::vector<double> reference = computed<double>(false);
  EXPECT_EQ(printed(), "grid: 3 2 2\n");
  const std::vector<float> cpu = computed<float>(false);
  EXPECT_EQ(printed(), "grid: 3 2 2\ncpu\n");
  const std::vector<double> gpuDouble = computed<double>(true);
  EXPECT_EQ(printed(), "computeCudaDouble 1\n");
  const std::vector<float> gpu = computed<float>(true);
  expectNear(cpu.data(), reference.data(), 1e-5);
  expectNear(gpu.data(), reference.data(), 1e-5);
  expectNear(gpuDouble.data(), reference.data(), 1e-5);
}

TEST_F(ComputeTest, FloatsOnTheGPUEchoTheFirstTwoResults) {
  const std::vector<float> out = computed<float>(true);
  std::ostringstream echo;
  echo << "cuda\n CUDADATA: " << out[0] << " " << out[1] << " " << out[2] << " " << out[3] << "\n";
  const std::string text = printed();
  EXPECT_EQ(text,
            " transform: 0.5 0 0 -0.75 0\n _device transform: 0.5 0 0 -0.75 0\n" + echo.str());
}

TEST_F(ComputeTest, AGridOfOnePointEchoesOnlyItsResult) {
  float out[2];
  piston.compute(out, {1, 1, 1, grid.transform()});
  std::ostringstream echo;
  echo << "cuda\n CUDADATA: " << out[0] << " " << out[1] << "\n";
  const std::string text = printed();
  EXPECT_EQ(text.substr(text.find("cuda\n")), echo.str());
}

TEST_F(ComputeTest, AStorageOfFloatsOnTheGPUIsFilledOnItsDeviceSide) {
  const std::vector<float> expected = computed<float>(true);
  printed();
  CudaStorage storage(CudaStorage::DT_FLOAT, values);
  piston.compute(&storage, grid);
  EXPECT_EQ(printed().find("CudaStorage function in RectangularPistonCuda2\n"), 0u);
  EXPECT_EQ(storage.getFloatData()[0], 0.0f);
  storage.toHost();
  for (std::size_t i = 0; i < values; ++i) EXPECT_EQ(storage.getFloatData()[i], expected[i]);
}

TEST_F(ComputeTest, StoragesOnTheCPUAreFilledOnTheirHostSide) {
  const std::vector<float> floats = computed<float>(false);
  const std::vector<double> doubles = computed<double>(false);
  printed();
  CudaStorage ofFloats(CudaStorage::DT_FLOAT, values);
  CudaStorage ofDoubles(CudaStorage::DT_DOUBLE, values);
  piston.compute(&ofFloats, grid);
  piston.compute(&ofDoubles, grid);
  EXPECT_EQ(printed(), "grid: 3 2 2\ngrid: 3 2 2\n");
  for (std::size_t i = 0; i < values; ++i) {
    EXPECT_EQ(ofFloats.getFloatData()[i], floats[i]);
    EXPECT_EQ(ofDoubles.getDoubleData()[i], doubles[i]);
  }
}

TEST_F(ComputeTest, AStorageOfAnotherSizeFailsBeforeAnythingIsComputed) {
  for (const CudaStorage::Type type : {CudaStorage::DT_DOUBLE, CudaStorage::DT_FLOAT})
    for (const bool useGPU : {false, true})
      for (const std::size_t size : {values - 1, values + 1, std::size_t{12}}) {
        piston.useGPU = useGPU;
        CudaStorage storage(type, size);
        const Failure failure = failureOf([&] { piston.compute(&storage, grid); });
        EXPECT_EQ(failure.condition, "data->getSize() == grid.nbPositions()*2");
        EXPECT_EQ(failure.line, 56);
        EXPECT_EQ(failure.file, "src/FastNearfield/RectangularPiston2");
      }
  EXPECT_EQ(printed(), "");
}

using ComputeDeathTest = ComputeTest;

TEST_F(ComputeDeathTest, AStorageOfDoublesOnTheGPUAborts) {
  CudaStorage storage(CudaStorage::DT_DOUBLE, values);
  EXPECT_EXIT(piston.compute(&storage, grid), testing::KilledBySignal(SIGABRT),
              "^src/FastNearfield/RectangularPiston2:64: compute: Assertion `false' failed\\.\n");
}

TEST_F(ComputeTest, TheGridsScaleCountsOnTheCPUAlone) {
  Grid3DR<double>::Transform doubled = grid.transform();
  doubled[15] = 2;
  for (const bool useGPU : {false, true}) {
    const std::vector<float> whole = computed<float>(useGPU);
    std::vector<float> scaled(values);
    piston.compute(scaled.data(), {3, 2, 2, doubled});
    EXPECT_EQ(scaled == whole, useGPU);
  }
}

TEST_F(ComputeTest, OnTheCPUThreeCornersHaveNoValue) {
  // the corners of a piston with sides 2 along y and 1 along x
  const Grid3DR<double> corners(2, 2, 1, {1, 0, 0, -0.5, 0, 2, 0, -1, 0, 0, 1, 0.5, 0, 0, 0, 1});
  const auto haveValues = [](const auto& pressures) {
    std::vector<bool> finite;
    for (std::size_t i = 0; i < pressures.size(); i += 2)
      finite.push_back(std::isfinite(pressures[i]) && std::isfinite(pressures[i + 1]));
    return finite;
  };
  std::vector<float> floats(8);
  std::vector<double> doubles(8);
  for (const bool useGPU : {false, true}) {
    piston.useGPU = useGPU;
    piston.compute(floats.data(), corners);
    piston.compute(doubles.data(), corners);
    const std::vector<bool> expected = {true, useGPU, useGPU, useGPU};
    EXPECT_EQ(haveValues(floats), expected);
    EXPECT_EQ(haveValues(doubles), expected);
  }
}

/// A transducer that implements only the computation into floats, and counts its calls.
class Counting : public pistonfield::Piston {
 public:
  using Piston::compute;
  void compute(float* out, const Grid3DR<double>& on) const override {
    for (unsigned n = 0; n < 2 * on.nbPositions(); ++n) out[n] = static_cast<float>(n);
  }
};

TEST_F(ComputeTest, OtherTransducersFillTheHostSideOfFloatsAndRefuseDoubles) {
  CudaStorage storage(CudaStorage::DT_FLOAT, values), doubles(CudaStorage::DT_DOUBLE, values);
  const Counting counting;
  static_cast<const pistonfield::Transducer&>(counting).compute(&storage, grid);
  for (std::size_t i = 0; i < values; ++i)
    EXPECT_EQ(storage.getFloatData()[i], static_cast<float>(i));
  const Failure failure = failureOf([&] { counting.compute(&doubles, grid); });
  EXPECT_EQ(failure.condition, "data->getType() == CudaStorage::DT_FLOAT");
  EXPECT_EQ(failure.line, 14);
  EXPECT_EQ(failure.file, "src/FastNearfield/Transducer");
}

/// The functions that users of the library call inside a scope that holds the device.
class ComputeInScopeTest : public ComputeTest {
 protected:
  void SetUp() override {
    ComputeTest::SetUp();
    if (!IsSkipped()) pistonfield::forgetRules();
  }

  /// The condition that is reported by each way of computing on the device.
  std::vector<std::string> conditions() {
    std::vector<float> floats(values);
    std::vector<double> doubles(values);
    CudaStorage storage(CudaStorage::DT_FLOAT, values);
    return {failureOf([&] { piston.compute(floats.data(), grid); }).condition,
            failureOf([&] { piston.compute(doubles.data(), grid); }).condition,
            failureOf([&] { piston.compute(&storage, grid); }).condition};
  }

  void expectNoRule() {
    const std::string advice =
        "call setCudaIntegratorParameters(\"RectangularPiston\", order) on this thread, inside its "
        "CudaDeviceThread";
    const std::string single = "No quadrature rule is loaded: " + advice;
    const std::string dual = "No quadrature rule is loaded in double precision: " + advice +
                             ". Builds with PISTONFIELD_DOUBLE=OFF have single precision only";
    EXPECT_EQ(conditions(), (std::vector<std::string>{single, dual, single}));
  }
};

TEST_F(ComputeInScopeTest, WithoutARuleIsAnErrorAndARuleEndsWithItsScope) {
  {
    const CudaDeviceThread scope;
    expectNoRule();
    setCudaIntegratorParameters("RectangularPiston", 64);
    EXPECT_EQ(conditions(), std::vector<std::string>(3));
  }
  const CudaDeviceThread scope;
  expectNoRule();
}

TEST_F(ComputeInScopeTest, ARefusedRuleIsNone) {
  const CudaDeviceThread scope;
  EXPECT_NE(failureOf([] { setCudaIntegratorParameters("RectangularPiston", 513); }).condition, "");
  EXPECT_NE(failureOf([] { setCudaIntegratorParameters("CircularPiston", 20); }).condition, "");
  expectNoRule();
}

TEST_F(ComputeInScopeTest, ARuleEndsWhereItIsReleasedAndWhereAScopeBegins) {
  setCudaIntegratorParameters("RectangularPiston", 64);
  EXPECT_EQ(conditions()[0], "");
  pistonfield::CudaInterface::release();
  EXPECT_NE(conditions()[0], "");
  setCudaIntegratorParameters("RectangularPiston", 64);
  const CudaDeviceThread scope;
  EXPECT_NE(conditions()[0], "");
}

#if !defined(CUDART_VERSION)
TEST_F(ComputeInScopeTest, ARuleThatWasWrittenInPartIsNone) {
  for (const bool returns : {false, true})
    for (int nth = 1; nth <= 6; ++nth) {
      const CudaDeviceThread scope;
      setCudaIntegratorParameters("RectangularPiston", 20);
      emulationTestControl()->failCall("cudaMemcpyToSymbol", nth, cudaErrorUnknown, false);
      std::vector<Failure> failures;
      if (returns) {
        pistonfield::ErrorHandler::setErrorHandler(new support::ReturningHandler(failures));
        testing::internal::CaptureStderr();
        setCudaIntegratorParameters("RectangularPiston", 40);
        testing::internal::GetCapturedStderr();
      } else {
        failures = {failureOf([] { setCudaIntegratorParameters("RectangularPiston", 40); })};
      }
      EXPECT_NE(failures.at(0).condition, "");
      cudaGetLastError();  // loading leaves this error pending by contract
      // The double-precision rule is loaded first. If that fails, the single-precision rule is
      // either unchanged or loaded.
      const std::vector<std::string> reported = conditions();
      EXPECT_EQ(reported[1].empty(), nth > 3) << nth;
      if (nth > 3) {
        EXPECT_NE(reported[0], "") << nth;
        EXPECT_NE(reported[2], "") << nth;
      }
      emulationTestControl()->restore();
    }
}
#endif

TEST_F(ComputeInScopeTest, AScopeWithinAScopeEndsNothing) {
  const CudaDeviceThread scope;
  setCudaIntegratorParameters("RectangularPiston", 64);
  const std::vector<float> before = computed<float>(true);
  { const CudaDeviceThread inner; }
  EXPECT_EQ(computed<float>(true), before);
  EXPECT_NE(before[0], 0.0f);
}

TEST_F(ComputeInScopeTest, AnEmptyGridComputesNothing) {
  const CudaDeviceThread scope;
  setCudaIntegratorParameters("RectangularPiston", 64);
  const Grid3DR<double> empty(3, 0, 2, grid.transform());
  CudaStorage storage(CudaStorage::DT_FLOAT, 0);
  for (const bool useGPU : {false, true}) {
    piston.useGPU = useGPU;
    EXPECT_NO_THROW(piston.compute(static_cast<float*>(nullptr), empty));
    EXPECT_NO_THROW(piston.compute(static_cast<double*>(nullptr), empty));
    EXPECT_NO_THROW(piston.compute(&storage, empty));
  }
}

#if !defined(CUDART_VERSION)
TEST_F(ComputeInScopeTest, AnOutOfMemoryThatWasReportedFailsNoLaterCall) {
  const CudaDeviceThread scope;
  setCudaIntegratorParameters("RectangularPiston", 64);
  emulationTestControl()->separateMemory();
  emulationTestControl()->failCall("cudaMalloc", 1, cudaErrorMemoryAllocation, false);
  EXPECT_EQ(failureOf([&] { computed<float>(true); }).condition,
            "Cuda error when calling cudaMalloc((void**)&d_array, datasize): out of memory");
  EXPECT_EQ(failureOf([&] { computed<float>(true); }).condition, "");
  emulationTestControl()->restore();
}
#endif

}  // namespace
