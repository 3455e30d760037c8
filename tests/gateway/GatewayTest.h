#pragma once

#include <gtest/gtest.h>

#include <complex>
#include <string>
#include <vector>

#include "host/MexHost.h"

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

  std::vector<mxArray> first(std::size_t count) const;
};

/// The path of the module with only the symbols that users get: the value of
/// PISTONFIELD_HIDDEN_MODULE or, if it is not set, the path in the build folder.
std::string hiddenModulePath();

/// Whether a call ended because there is no device.
bool lacksDevice(const host::Outcome& outcome);

class GatewayTest : public testing::Test {
 protected:
  void SetUp() override;

  /// p = pistonfield(the first `count` arguments).
  host::Outcome call(const Arguments& arguments, std::size_t count = 7);

  /// The pressures of a call, which must succeed.
  std::vector<std::complex<double>> pressures(const Arguments& arguments, std::size_t count = 7);

  /// The error of a call, or "" if it succeeds.
  std::string errorOf(const Arguments& arguments, std::size_t count = 7);

  /// The value of PISTONFIELD_GATEWAY_MODULE or, if it is not set, the path in the build folder.
  static std::string modulePath();

  host::MexHost module{modulePath()};
};
