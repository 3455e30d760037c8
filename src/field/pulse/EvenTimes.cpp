#include "field/pulse/EvenTimes.h"

#include <cmath>

namespace pistonfield {

TimeAxis axisThrough(const double* times, std::size_t count, double rate) {
  const auto steps = static_cast<double>(count) - 1;
  if (count > 1) rate = steps / (times[count - 1] - times[0]);
  bool isEven = count > 0 && std::isfinite(times[0]) && rate > 0 && std::isfinite(rate);
  for (std::size_t n = 1; isEven && n < count; ++n)
    isEven = std::fabs((times[n] - times[0]) * rate - static_cast<double>(n)) <= 1e-6;
  if (!isEven) throw FieldError("times must be one or more finite numbers in equal steps upwards.");
  return {times[0], rate, count};
}

}  // namespace pistonfield
