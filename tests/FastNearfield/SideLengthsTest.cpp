#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "FastNearfield/RectangularPistonKernels.h"
#include "core/CudaCompatibility.h"
#include "support/DeviceArrays.h"
#include "support/DeviceTest.h"
#include "support/SameBits.h"

using pistonfield::Complex;

namespace {

class SideLengthsTest : public support::DeviceTest {};

TEST_F(SideLengthsTest, TheKernelReceivesThemHalvedAndExchanged) {
  setCudaIntegratorParameters("RectangularPiston", 10);
  float position[] = {0.3f, 0.2f, 1.5f};
  Complex launched;
  RectangularPiston_func_unstructured(&launched, 1, position, 2, 4, 5);

  support::GuardedArray<Complex> value(1);
  const support::Uploaded<float> d_pos({position, position + 3});
  const auto kernelWith = [&](float a, float b) {
    EXPECT_EQ(pistonfield::launch(calculate_grid_unstructured, dim3(1), dim3(128), value.device(),
                                  1, d_pos.get(), a, b, 5.0f),
              cudaSuccess);
    return value.read()[0];
  };
  const Complex expected = kernelWith(2, 1);
  const Complex unexchanged = kernelWith(1, 2);
  EXPECT_TRUE(support::sameBits(launched, expected));
  EXPECT_FALSE(support::sameBits(launched, unexchanged));
}

}  // namespace
