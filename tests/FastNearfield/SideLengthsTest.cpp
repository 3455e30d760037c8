#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "FastNearfield/RectangularPistonKernels.h"
#include "core/CudaToday.h"
#include "core/DeviceBuffer.h"
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

  pistonfield::DeviceBuffer<Complex> d_array;
  pistonfield::DeviceBuffer<float> d_pos;
  ASSERT_EQ(d_array.allocate(sizeof(Complex)), cudaSuccess);
  ASSERT_EQ(d_pos.allocate(sizeof position), cudaSuccess);
  ASSERT_EQ(cudaMemcpy(d_pos.get(), position, sizeof position, cudaMemcpyHostToDevice),
            cudaSuccess);
  const auto kernelWith = [&](float a, float b) {
    Complex value{};
    EXPECT_EQ(pistonfield::launch(calculate_grid_unstructured, dim3(1), dim3(128), d_array.get(), 1,
                                  d_pos.get(), a, b, 5.0f),
              cudaSuccess);
    EXPECT_EQ(cudaMemcpy(&value, d_array.get(), sizeof value, cudaMemcpyDeviceToHost), cudaSuccess);
    return value;
  };
  const Complex expected = kernelWith(2, 1);
  const Complex unexchanged = kernelWith(1, 2);
  EXPECT_TRUE(support::sameBits(launched, expected));
  EXPECT_FALSE(support::sameBits(launched, unexchanged));
}

}  // namespace
