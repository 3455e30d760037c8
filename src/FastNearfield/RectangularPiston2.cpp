#include "FastNearfield/RectangularPiston2.h"

namespace pistonfield {
namespace {
constexpr int cpuOrder = 100;
}

RectangularPistonCuda2::RectangularPistonCuda2(double l_, double s_, double k_)
    : l(l_),
      s(s_),
      k(k_),
      doubleTable_(cpuOrder),
      floatTable_(cpuOrder),
      floatRule(&floatTable_),
      doubleRule(&doubleTable_) {}

}  // namespace pistonfield
