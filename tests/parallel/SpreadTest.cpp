#include "parallel/Spread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <stdexcept>
#include <utility>
#include <vector>

#include "parallel/Cores.h"

namespace {

using Range = std::pair<std::uint64_t, std::uint64_t>;

/// The ranges that the body is called for, sorted; each call takes some time.
std::vector<Range> ranges(std::uint64_t count, std::uint64_t length) {
  std::vector<Range> handedOut;
  std::mutex mutex;
  pistonfield::parallel::spread(count, length, [&](std::uint64_t first, std::uint64_t last) {
    static std::atomic<std::uint64_t> work;
    for (std::uint64_t n = 0; n < 200 * std::min<std::uint64_t>(last - first, 1000); ++n) work += n;
    const std::lock_guard lock(mutex);
    handedOut.emplace_back(first, last);
  });
  std::sort(handedOut.begin(), handedOut.end());
  return handedOut;
}

TEST(SpreadTest, RangesMakeUpTheWhole) {
  for (const std::uint64_t count : {0u, 1u, 9u, 10u, 11u, 79u, 80u, 81u, 1000u, 12345u})
    for (const std::uint64_t length : {1u, 10u, 4096u}) {
      std::uint64_t end = 0;
      for (const auto& [first, last] : ranges(count, length)) {
        ASSERT_EQ(first, end) << count << ", " << length;
        ASSERT_LT(first, last);
        end = last;
      }
      EXPECT_EQ(end, count) << length;
    }
}

TEST(SpreadTest, RangesAreLongWhileMuchIsLeft) {
  constexpr std::uint64_t count = 100003, length = 10;
  const std::vector<Range> all = ranges(count, length);
  std::uint64_t longest = 0;
  for (const auto& [first, last] : all) {
    EXPECT_EQ(first % length, 0);
    EXPECT_TRUE((last - first) % length == 0 || last == count) << first;
    longest = std::max(longest, last - first);
  }
  EXPECT_EQ(longest, 8 * length);
  const bool shared = pistonfield::parallel::cores() > 1;
  EXPECT_LE(all.back().second - all.back().first, shared ? length : 8 * length);
}

TEST(SpreadTest, CountsNearTheEndOfNumbersAreCounted) {
  constexpr std::uint64_t count = UINT64_MAX, length = std::uint64_t{1} << 60;
  std::uint64_t sum = 0;
  for (const auto& [first, last] : ranges(count, length)) sum += last - first;
  EXPECT_EQ(sum, count);
}

TEST(SpreadTest, NoRangeFollowsAnException) {
  std::atomic<int> after{0};
  std::atomic<bool> thrown{false};
  EXPECT_THROW(pistonfield::parallel::spread(1000000, 1,
                                             [&](std::uint64_t /*first*/, std::uint64_t /*last*/) {
                                               if (thrown) ++after;
                                               thrown = true;
                                               throw std::runtime_error("enough");
                                             }),
               std::runtime_error);
  EXPECT_LE(after, 1) << "but for one that had begun";
}

}  // namespace
