#pragma once

#include <gtest/gtest.h>

#include <complex>
#include <string>
#include <vector>

#include "host/MexHost.h"

// The module as its users call it, through the small host.

/// The arguments of p = pistonfield(points, ignored, l, s, k, mode, nabscissas), all good; a test
/// changes what it is about and passes as many as it likes.
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

/// The module with no symbols but those that users get, where PISTONFIELD_HIDDEN_MODULE says, else
/// where it was built.
std::string hiddenModulePath();

/// Whether a call ended so because there is no device.
bool lacksDevice(const host::Outcome& outcome);

class GatewayTest : public testing::Test {
 protected:
  void SetUp() override;

  /// p = pistonfield(the first `count` arguments).
  host::Outcome call(const Arguments& arguments, std::size_t count = 7);

  /// The call's pressures, which must succeed.
  std::vector<std::complex<double>> pressures(const Arguments& arguments, std::size_t count = 7);

  /// The call's error, "" if it succeeds.
  std::string errorOf(const Arguments& arguments, std::size_t count = 7);

  /// Where the environment's PISTONFIELD_GATEWAY_MODULE says, else where it was built.
  static std::string modulePath();

  host::MexHost module{modulePath()};
};
