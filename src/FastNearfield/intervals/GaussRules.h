#pragma once

#include <vector>

namespace pistonfield {

/// Gauss–Legendre rules of `least` and more nodes, one after the other. Intervals are measured from
/// their beginning: a node is at `fromStart` half-lengths, from 0 to 2, and has the weight `w`.
template <class Real>
struct GaussRuleTable {
  const Real* fromStart;
  const Real* w;
  int least;
};

/// Owns such a table.
template <class Real>
class GaussRules {
 public:
  /// Computes the rules of `least` to `most` nodes.
  GaussRules(int least, int most);

  GaussRuleTable<Real> table() const { return {fromStart_.data(), w_.data(), least_}; }
  const std::vector<Real>& fromStart() const { return fromStart_; }
  const std::vector<Real>& w() const { return w_; }

 private:
  int least_;
  std::vector<Real> fromStart_, w_;
};

}  // namespace pistonfield
