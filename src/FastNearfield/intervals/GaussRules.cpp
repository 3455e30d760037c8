#include "FastNearfield/intervals/GaussRules.h"

#include "FastNearfield/GaussLegendre.h"

namespace pistonfield {

template <class Real>
GaussRules<Real>::GaussRules(int least, int most) : least_(least) {
  std::vector<double> x(static_cast<std::size_t>(most)), w(x.size());
  for (int order = least; order <= most; ++order) {
    legendre_compute(order, x.data(), w.data());
    for (int j = 0; j < order; ++j) {
      const auto at = static_cast<std::size_t>(j);
      fromStart_.push_back(static_cast<Real>(1 + x[at]));
      w_.push_back(static_cast<Real>(w[at]));
    }
  }
}

template class GaussRules<float>;
template class GaussRules<double>;

}  // namespace pistonfield
