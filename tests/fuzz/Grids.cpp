#include "fuzz/Grids.h"

#include <algorithm>
#include <limits>

#include "fuzz/Numbers.h"

namespace fuzz {
namespace {

constexpr double mostPoints = 4096;  // two ranges of threads

int anyLength(FuzzedDataProvider& bytes) {
  static const int edges[] = {std::numeric_limits<int>::min(),
                              std::numeric_limits<int>::max(),
                              -1,
                              -2,
                              -3,
                              -65536,
                              0,
                              8,
                              46341,
                              65536,
                              1 << 21,
                              1 << 22,
                              1 << 30};
  const int choice = bytes.ConsumeIntegralInRange(0, 31);
  if (choice == 31) return bytes.ConsumeIntegral<int>();
  if (choice == 30) return bytes.PickValueInArray(edges);
  if (choice == 29) return bytes.ConsumeIntegralInRange(-3, 200);
  return 1 + choice % 12;
}

double exactPoints(const Size& size) { return double(size.sx) * size.sy * size.sz; }

}  // namespace

bool Size::isRight() const {
  return sx > 0 && sy > 0 && sz > 0 && exactPoints(*this) <= std::numeric_limits<int>::max();
}

bool Size::isLong() const { return isRight() && exactPoints(*this) > mostPoints; }

std::size_t Size::points() const {
  return isRight() ? static_cast<std::size_t>(exactPoints(*this)) : 0;
}

Size anySize(FuzzedDataProvider& bytes) {
  return {anyLength(bytes), anyLength(bytes), anyLength(bytes)};
}

Transform anyTransform(FuzzedDataProvider& bytes) {
  Transform transform{};
  const std::vector<float> values = numbers<float>(bytes, transform.size());
  std::copy(values.begin(), values.end(), transform.begin());
  return transform;
}

std::vector<float> positions(const Size& size, const Transform& transform) {
  std::vector<float> list;
  list.reserve(3 * size.points());
  for (int l = 0; l < size.sz; ++l)
    for (int j = 0; j < size.sy; ++j)
      for (int i = 0; i < size.sx; ++i)
        for (const float* row = transform.data(); row != transform.data() + 12; row += 4)
          list.push_back(row[0] * static_cast<float>(i) + row[1] * static_cast<float>(j) +
                         row[2] * static_cast<float>(l) + row[3]);
  return list;
}

std::vector<float> positions(const std::vector<float>& x, const std::vector<float>& y,
                             const std::vector<float>& z) {
  std::vector<float> list;
  for (const float pz : z)
    for (const float py : y)
      for (const float px : x) list.insert(list.end(), {px, py, pz});
  return list;
}

}  // namespace fuzz
