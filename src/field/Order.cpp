#include "field/order.h"

#include <algorithm>
#include <cmath>

namespace pistonfield {
namespace {

constexpr int highestOrder = 384;

class Search {
 public:
  Search(const Field& field, const Position* points, std::size_t count, double tolerance,
         const std::function<void(double)>& progress)
      : field_(field), points_(points), count_(count), tolerance_(tolerance) {
    if (progress) options_.progress = [&progress](double) { progress(0); };
    options_.tolerance = tolerance / 100;
    exact_ = field_.at(points_, count_, options_);
    for (const std::complex<double>& p : exact_)
      if (std::abs(p) > peak_) peak_ = std::abs(p);
  }

  double errorOf(int order) {
    options_.order = order;
    const std::vector<std::complex<double>> pressures = field_.at(points_, count_, options_);
    double largest = 0;
    for (std::size_t n = 0; n < count_; ++n)
      if (const double error = std::abs(pressures[n] - exact_[n]); error > largest) largest = error;
    return peak_ > 0 ? largest / peak_ : 0;
  }

  bool isSufficient(int order) { return errorOf(order) < tolerance_; }

  /// Divides a sufficient order by the factor until the next one is too low. Returns the last
  /// sufficient one.
  int descend(int order, double factor) {
    while (order > 1) {
      const int next = std::max(1, lowered(order, factor));
      if (!isSufficient(next)) break;
      order = next;
    }
    return order;
  }

  static int lowered(int order, double factor) { return static_cast<int>(order / factor); }

 private:
  const Field& field_;
  const Position* points_;
  std::size_t count_;
  double tolerance_;
  FieldOptions options_;
  std::vector<std::complex<double>> exact_;
  double peak_ = 0;
};

}  // namespace

SufficientOrder sufficientOrder(const Field& field, const Position* points, std::size_t count,
                                double tolerance, const std::function<void(double)>& progress) {
  if (!(tolerance >= 1e-6 && tolerance < 1))
    throw FieldError("tolerance must be at least 1e-6 and less than 1.");
  Search search(field, points, count, tolerance, progress);
  if (!search.isSufficient(highestOrder))
    throw FieldError(
        "No order up to 384 meets the tolerance. Check that points, sides and k are in one unit, "
        "with k = 2 pi / wavelength. Otherwise raise the tolerance, or leave out points behind a "
        "piston and next to very long edges.");
  int order = search.descend(highestOrder, 2);
  order = search.descend(std::min(highestOrder, 2 * order), 1.1);
  int tooLow = order > 1 ? Search::lowered(order, 1.1) : 0;
  while (order - tooLow > 1) {
    const int middle = (order + tooLow) / 2;
    (search.isSufficient(middle) ? order : tooLow) = middle;
  }
  return {order, search.errorOf(order)};
}

}  // namespace pistonfield
