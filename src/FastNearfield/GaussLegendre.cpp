#include "FastNearfield/GaussLegendre.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

namespace pistonfield {
namespace {

constexpr double pi = 3.141592653589793;

struct Node {
  double x, w;
};

/// A 32-bit product that wraps on overflow, which happens only for orders that no caller uses.
int wrappingProduct(int a, int b) {
  return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(b));
}

/// The i-th largest root of the Legendre polynomial of degree n, and its weight: an asymptotic
/// first value, one series correction and one Newton step on the Taylor polynomial of fourth order.
Node node(int n, int i) {
  const double order = n;
  const double e1 = wrappingProduct(n, n + 1);

  const double t = (4 * i - 1) * pi / (4 * n + 2);
  const double x0 =
      std::cos(t) * (1.0 - (1.0 - 1.0 / order) / wrappingProduct(wrappingProduct(n, n), 8));

  double pkm1 = 1.0;
  double pk = x0;
  for (int k = 2; k <= n; ++k) {
    const double next = 2.0 * x0 * pk - pkm1 - (x0 * pk - pkm1) / k;
    pkm1 = pk;
    pk = next;
  }

  const double q = 1.0 - x0 * x0;
  const double d1 = order * (pkm1 - x0 * pk);
  const double dpn = d1 / q;
  const double d2pn = (2.0 * x0 * dpn - e1 * pk) / q;
  const double d3pn = (4.0 * x0 * d2pn + (2.0 - e1) * dpn) / q;
  const double d4pn = (6.0 * x0 * d3pn + (6.0 - e1) * d2pn) / q;

  const double u = pk / dpn;
  const double v = d2pn / dpn;
  double h = -u * (1.0 + 0.5 * u * (v + u * (v * v + d3pn / (-3.0 * dpn))));

  const double p = pk + h * (dpn + 0.5 * h * (d2pn + h / 3.0 * (d3pn + 0.25 * h * d4pn)));
  const double dp = dpn + h * (d2pn + 0.5 * h * (d3pn + h * d4pn / 3.0));
  h = h - p / dp;

  const double x = x0 + h;
  const double fx =
      d1 - h * e1 * (pk + 0.5 * h * (dpn + h / 3.0 * (d2pn + 0.25 * h * (d3pn + 0.2 * h * d4pn))));
  return {x, 2.0 * (1.0 - x * x) / (fx * fx)};
}

}  // namespace

void legendre_compute(int order, double* x, double* w) {
  if (order < 1) {
    std::cout << "\n"
              << "LEGENDRE_COMPUTE - Fatal error!\n"
              << "  Illegal value of ORDER = " << std::to_string(order) << "\n";
    std::exit(1);
  }

  // The non-negative half, at the top of the arrays, and its mirror image below.
  const int half = (order + 1) / 2;
  for (int i = 1; i <= half; ++i) {
    Node root = node(order, i);
    if (order % 2 == 1 && i == half) root.x = 0.0;
    x[order - i] = root.x;
    w[order - i] = root.w;
  }
  for (int i = 1; i <= order - half; ++i) {
    x[i - 1] = -x[order - i];
    w[i - 1] = w[order - i];
  }
}

template <class T>
void legendre_compute(int order, T* x, T* w) {
  const auto size = static_cast<std::size_t>(order);  // if negative, too much to allocate
  const std::unique_ptr<double[]> x64(new double[size]);
  const std::unique_ptr<double[]> w64(new double[size]);
  legendre_compute(order, x64.get(), w64.get());
  std::transform(x64.get(), x64.get() + order, x, [](double v) { return static_cast<T>(v); });
  std::transform(w64.get(), w64.get() + order, w, [](double v) { return static_cast<T>(v); });
}

template void legendre_compute<float>(int order, float* x, float* w);

}  // namespace pistonfield
