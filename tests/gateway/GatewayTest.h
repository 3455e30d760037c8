#pragma once

#include <gtest/gtest.h>

#include <complex>
#include <cstdlib>
#include <string>
#include <vector>

#include "host/MexHost.h"
#include "support/WithoutDevice.h"

// Calls the module as its users do, through the tests' host.

/// The arguments of p = pistonfield(points, ignored, l, s, k, mode, nabscissas), all valid. A test
/// changes those that it is about and passes as many as it needs.
struct Arguments {
  mxArray points = host::matrix(3, 1, {0, 0, 0.01});
  mxArray ignored = host::scalar(0);
  mxArray l = host::scalar(0.01);
  mxArray s = host::scalar(0.005);
  mxArray k = host::scalar(4188.79);
  mxArray mode = host::text("cuda");
  mxArray nabscissas = host::scalar(10);

  std::vector<mxArray> first(std::size_t count) const {
    const std::vector<mxArray> all = {points, ignored, l, s, k, mode, nabscissas, host::scalar(0)};
    return {all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count)};
  }
};

class GatewayTest : public testing::Test {
 protected:
  void SetUp() override {
    if (errorOf({}).find("src/core/cuda_init") != std::string::npos) support::skipWithoutDevice();
  }

  /// p = pistonfield(the first `count` arguments).
  host::Outcome call(const Arguments& arguments, std::size_t count = 7) {
    return module.call(1, arguments.first(count));
  }

  /// The pressures of a call, which must succeed.
  std::vector<std::complex<double>> pressures(const Arguments& arguments, std::size_t count = 7) {
    const host::Outcome outcome = call(arguments, count);
    EXPECT_FALSE(outcome.error) << *outcome.error;
    const mxArray p = outcome.error ? mxArray{} : outcome.results.at(0);
    EXPECT_TRUE(p.isComplex);
    EXPECT_EQ(p.dims, (std::vector<std::size_t>{p.re.size(), 1}));
    std::vector<std::complex<double>> values;
    for (std::size_t i = 0; i < p.re.size(); ++i) values.emplace_back(p.re[i], p.im[i]);
    return values;
  }

  /// The error of a call, or "" if it succeeds.
  std::string errorOf(const Arguments& arguments, std::size_t count = 7) {
    return call(arguments, count).error.value_or("");
  }

  /// The value of PISTONFIELD_GATEWAY_MODULE or, if it is not set, the path in the build folder.
  static std::string modulePath() {
    const char* const path = std::getenv("PISTONFIELD_GATEWAY_MODULE");
    return path ? path : PISTONFIELD_GATEWAY_MODULE;
  }

  host::MexHost module{modulePath()};
};
