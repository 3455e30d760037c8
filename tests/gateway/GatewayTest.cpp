#include "gateway/GatewayTest.h"

#include <cstdlib>

#include "support/WithoutDevice.h"

std::vector<mxArray> Arguments::first(std::size_t count) const {
  const std::vector<mxArray> all = {points, ignored, l, s, k, mode, nabscissas, host::scalar(0)};
  return {all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count)};
}

std::string hiddenModulePath() {
  const char* const path = std::getenv("PISTONFIELD_HIDDEN_MODULE");
  return path ? path : PISTONFIELD_HIDDEN_MODULE;
}

bool lacksDevice(const host::Outcome& outcome) {
  return outcome.error && outcome.error->find("src/core/cuda_init") != std::string::npos;
}

std::string GatewayTest::modulePath() {
  const char* const path = std::getenv("PISTONFIELD_GATEWAY_MODULE");
  return path ? path : PISTONFIELD_GATEWAY_MODULE;
}

host::Outcome GatewayTest::call(const Arguments& arguments, std::size_t count) {
  return module.call(1, arguments.first(count));
}

std::vector<std::complex<double>> GatewayTest::pressures(const Arguments& arguments,
                                                         std::size_t count) {
  const host::Outcome outcome = call(arguments, count);
  EXPECT_FALSE(outcome.error) << *outcome.error;
  std::vector<std::complex<double>> values;
  if (outcome.results.empty()) {
    ADD_FAILURE() << "the call returned nothing";
    return values;
  }
  const mxArray& p = outcome.results[0];
  EXPECT_TRUE(p.isComplex);
  EXPECT_EQ(p.dims, (std::vector<std::size_t>{p.re.size(), 1}));
  for (std::size_t i = 0; i < p.re.size(); ++i) values.emplace_back(p.re[i], p.im[i]);
  return values;
}

std::string GatewayTest::errorOf(const Arguments& arguments, std::size_t count) {
  return call(arguments, count).error.value_or("");
}

void GatewayTest::SetUp() {
  if (lacksDevice(call({}))) support::skipWithoutDevice();
}
