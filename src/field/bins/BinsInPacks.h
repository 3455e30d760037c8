#pragma once

#include "field/bins/PulseOnPoints.h"
#include "lanes/Pack.h"

// Bins of time in registers: how nodes are divided among them, and how they become a pulse.

namespace pistonfield {

/// Lagrange's polynomials for the nodes −3 … 4, in powers of the place from 0 to 1.
template <class Set>
struct BinWeights {
  alignas(64) double of[binsOfNode][binsOfNode];  ///< [power][bin]

  static constexpr BinWeights make() {
    BinWeights weights{};
    for (int bin = 0; bin < binsOfNode; ++bin) {
      double factors[binsOfNode] = {1};
      for (int other = 0; other < binsOfNode; ++other) {
        if (other == bin) continue;
        for (int power = binsOfNode; power-- > 0;)
          factors[power] =
              ((power > 0 ? factors[power - 1] : 0) - (other - 3) * factors[power]) / (bin - other);
      }
      for (int power = 0; power < binsOfNode; ++power) weights.of[power][bin] = factors[power];
    }
    return weights;
  }
};

template <class Set>
inline constexpr BinWeights<Set> binWeights = BinWeights<Set>::make();

/// Adds a node of this weight, at `place` from 0 to 1 behind the fourth of eight bins.
template <class Set>
void addNode(double place, double weight, double* bins) {
  using V = Pack<Set>;
  constexpr auto& factors = binWeights<Set>.of;
  const V x(place), w(weight);
  for (int bin = 0; bin < binsOfNode; bin += V::lanes) {
    V value = V::load(factors[binsOfNode - 1] + bin);
    for (int power = binsOfNode - 1; power-- > 0;)
      value = multiplyAdd(value, x, V::load(factors[power] + bin));
    multiplyAdd(value, w, V::load(bins + bin)).store(bins + bin);
  }
}

/// ⌊a/b⌋ for b > 0.
template <class Set>
long long floorOfQuotient(long long a, long long b) {
  return a / b - (a % b < 0 ? 1 : 0);
}

/// Adds the bins of rows in which one sample is one bin of a phase. Bins that are `apart`, as many
/// samples as a pack has, follow each other: of each row only one pack has not been loaded before.
template <class Set, int packs, class RowOf>
void addApart(const RowOf& rowOf, const double* bins, int begin, int end, int apart,
              Pack<Set>* sums) {
  using V = Pack<Set>;
  const int last = apart < end - begin ? begin + apart : end;
  for (int first = begin; first < last; ++first) {
    const double* row = rowOf(first);
    V values[packs];
    for (int pack = 0; pack < packs; ++pack) values[pack] = V::load(row + pack * V::lanes);
    for (int bin = first;;) {
      const V weight(bins[bin]);
      for (int pack = 0; pack < packs; ++pack)
        sums[pack] = multiplyAdd(weight, values[pack], sums[pack]);
      bin += apart;
      if (bin >= end) break;
      row -= V::lanes;
      for (int pack = packs; pack-- > 1;) values[pack] = values[pack - 1];
      values[0] = V::load(row);
    }
  }
}

template <class Set>
void convolvePulse(const PulseTable& table, const double* bins, long long origin, int from, int to,
                   long long sample, int count, double* samples) {
  using V = Pack<Set>;
  constexpr int packs = 4, together = packs * V::lanes;
  static_assert(PulseTable::padding % together == 0);
  // Bin `bin` of phase f adds row f to the samples from (bin − f)/phases·step on.
  for (int n = 0; n < count; n += together) {
    const long long firstSample = sample + n - table.first;
    // Those whose rows overlap these samples.
    const long long least = floorOfQuotient<Set>(firstSample - table.length, table.step) + 1,
                    most = floorOfQuotient<Set>(firstSample + together - 1, table.step);
    const long long leastBin = least * table.phases - origin,
                    mostBin = most * table.phases + table.phases - 1 - origin;
    const int begin = leastBin > from ? static_cast<int>(leastBin) : from,
              end = mostBin + 1 < to ? static_cast<int>(mostBin + 1) : to;
    if (begin >= end) continue;
    V sums[packs];
    for (int pack = 0; pack < packs; ++pack) sums[pack] = V::load(samples + n + pack * V::lanes);
    const auto rowOf = [&](int bin) {
      const long long place = floorOfQuotient<Set>(origin + bin, table.phases);
      return table.values + (origin + bin - place * table.phases) * table.stride +
             (firstSample - place * table.step);
    };
    if (table.step == 1)
      addApart<Set, packs>(rowOf, bins, begin, end, V::lanes * table.phases, sums);
    else
      for (int bin = begin; bin < end; ++bin) {
        const V weight(bins[bin]);
        const double* const row = rowOf(bin);
        for (int pack = 0; pack < packs; ++pack)
          sums[pack] = multiplyAdd(weight, V::load(row + pack * V::lanes), sums[pack]);
      }
    for (int pack = 0; pack < packs; ++pack) sums[pack].store(samples + n + pack * V::lanes);
  }
}

}  // namespace pistonfield
