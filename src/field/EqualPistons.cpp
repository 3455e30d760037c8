#include "field/EqualPistons.h"

#include <algorithm>
#include <cmath>

#include "field/Vectors.h"

namespace pistonfield {
namespace {

constexpr std::size_t mostComparisons = 2000000;

bool isEqual(const Field::Piston& p, const Field::Piston& q) {
  return p.width == q.width && p.height == q.height && p.axes == q.axes;
}

}  // namespace

double EqualPistons::weightSum() const {
  double sum = 0;
  for (const Field::Piston& piston : pistons) sum += std::abs(piston.weight);
  return sum;
}

std::vector<EqualPistons> equalPistons(std::vector<Field::Piston> pistons, const Rows& rows,
                                       double negligible) {
  std::vector<EqualPistons> groups;
  const double step2 = dot(rows.step, rows.step), step = std::sqrt(step2);
  std::size_t comparisons = 0;
  std::vector<Field::Piston> left;
  for (; !pistons.empty(); pistons.swap(left), left.clear()) {
    const Field::Piston first = pistons.front();
    EqualPistons group{{first}, {0}, true};
    for (std::size_t n = 1; n < pistons.size(); ++n) {
      const Field::Piston& piston = pistons[n];
      const Position apart = difference(piston.centre, first.centre);
      const double steps = dot(apart, rows.step) / step2;
      const Position beside = {apart[0] - steps * rows.step[0], apart[1] - steps * rows.step[1],
                               apart[2] - steps * rows.step[2]};
      if (!isEqual(piston, first) || dot(beside, beside) > negligible * negligible) {
        left.push_back(piston);
        continue;
      }
      group.displacements.push_back(steps);
      group.least = std::min(group.least, steps);
      group.most = std::max(group.most, steps);
      group.pistons.push_back(piston);
      if (std::fabs(steps - std::round(steps)) * step > negligible) group.onSteps = false;
    }
    comparisons += pistons.size();
    groups.push_back(group);
    if (comparisons <= mostComparisons) continue;
    for (const Field::Piston& piston : left) groups.push_back({{piston}, {0}, true});
    left.clear();
  }
  return groups;
}

}  // namespace pistonfield
