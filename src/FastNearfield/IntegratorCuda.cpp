#include "FastNearfield/IntegratorCuda.h"

#include <cstddef>
#include <memory>

#include "FastNearfield/GaussLegendre.h"
#include "core/CudaCheck.h"
#include "core/DeviceLock.h"
#include "core/Progress.h"

using pistonfield::progress;
using pistonfield::stageCheck;

namespace {

constexpr const char* sourceFile = "src/FastNearfield/IntegratorCuda";

std::unique_ptr<float[]> firstAsFloats(const double* values, int count) {
  std::unique_ptr<float[]> floats(new float[static_cast<std::size_t>(count)]);
  for (int i = 0; i < count; ++i)
    floats[static_cast<std::size_t>(i)] = static_cast<float>(values[i]);
  return floats;
}

}  // namespace

void setCudaIntegratorParameters(const char* name, int order) {
  const pistonfield::DeviceLock lock;
  stageCheck("start setCudaIntegratorParameters", HERE);
  if (order < 1) {
    pistonfield::fail("order>0", HERE);
    return;  // there is no such rule
  }
  const int M = order / 2 + order % 2;
  progress() << "setting order " << order << "elements: " << M << std::endl;

  // The next step rejects an order beyond the tables before it reads any values. Computing them
  // could take hours.
  const int computed = order <= 512 ? order : 0;
  std::unique_ptr<double[]> x(new double[static_cast<std::size_t>(computed)]);
  std::unique_ptr<double[]> w(new double[static_cast<std::size_t>(computed)]);
  if (computed > 0) pistonfield::legendre_compute(order, x.get(), w.get());
  setIntegratorWeightsSym_d(name, x.get(), w.get(), order);
  if (computed == 0) return;

  const std::unique_ptr<float[]> xf = firstAsFloats(x.get(), M);
  const std::unique_ptr<float[]> wf = firstAsFloats(w.get(), M);
  x.reset();
  w.reset();
  setIntegratorWeightsSym(name, xf.get(), wf.get(), order);
  stageCheck("end setCudaIntegratorParameters", HERE);
}
