#pragma once

#include "field/filter/RowFilter.h"
#include "lanes/Pack.h"

namespace pistonfield {

template <class Set>
void addPack(Pack<Set> values, double* to) {
  if constexpr (sizeof(typename Set::Value) == sizeof(float)) {
    using Half = Pack<typename Set::Double>;
    (Half::load(to) + Half::of(Set::lower(values.value))).store(to);
    to += Half::lanes;
    (Half::load(to) + Half::of(Set::upper(values.value))).store(to);
  } else {
    (Pack<Set>::load(to) + values).store(to);
  }
}

template <class V, bool isReal>
void addBlock(const RowFilter<typename V::Value>& filter, int first, int last,
              const typename V::Value* re, const typename V::Value* im, double* sumRe,
              double* sumIm) {
  // Apart, so that no sum waits for another.
  constexpr int packs = 2;
  static_assert(rowsTogether % (packs * V::lanes) == 0);
  V reRe[packs], imIm[packs], reIm[packs], imRe[packs];
  for (int pack = 0; pack < packs; ++pack) reRe[pack] = imIm[pack] = reIm[pack] = imRe[pack] = V(0);
  for (int n = first; n < last; ++n) {
    const V factorRe(filter.re[n]);
    const auto* const columnRe = re + filter.columns[n] * rowsTogether;
    const auto* const columnIm = im + filter.columns[n] * rowsTogether;
    for (int pack = 0; pack < packs; ++pack) {
      const V valueRe = V::load(columnRe + pack * V::lanes),
              valueIm = V::load(columnIm + pack * V::lanes);
      reRe[pack] = multiplyAdd(factorRe, valueRe, reRe[pack]);
      reIm[pack] = multiplyAdd(factorRe, valueIm, reIm[pack]);
      if constexpr (!isReal) {
        const V factorIm(filter.im[n]);
        imIm[pack] = multiplyAdd(factorIm, valueIm, imIm[pack]);
        imRe[pack] = multiplyAdd(factorIm, valueRe, imRe[pack]);
      }
    }
  }
  for (int pack = 0; pack < packs; ++pack) {
    addPack(reRe[pack] - imIm[pack], sumRe + pack * V::lanes);
    addPack(reIm[pack] + imRe[pack], sumIm + pack * V::lanes);
  }
}

template <class V>
void filterInPacks(const RowFilter<typename V::Value>& filter, const typename V::Value* re,
                   const typename V::Value* im, double* sumRe, double* sumIm) {
  constexpr auto addReal = addBlock<V, true>, addComplex = addBlock<V, false>;
  const auto add = filter.im == nullptr ? addReal : addComplex;
  for (int row = 0; row < rowsTogether; row += 2 * V::lanes)
    for (int first = 0; first < filter.count; first += filterBlock) {
      const int last = first + filterBlock < filter.count ? first + filterBlock : filter.count;
      add(filter, first, last, re + row, im + row, sumRe + row, sumIm + row);
    }
}

template <class V>
void turnInPacks(const Column& column, const Column& phases, const Column& steps) {
  for (int row = 0; row < rowsTogether; row += V::lanes) {
    const auto from = [&](const double* numbers) { return V::load(numbers + row); };
    const V re = from(column.re), im = from(column.im), cosine = from(phases.re),
            sine = from(phases.im), stepRe = from(steps.re), stepIm = from(steps.im);
    multiplyAdd(re, cosine, -(im * sine)).store(column.re + row);
    multiplyAdd(re, sine, im * cosine).store(column.im + row);
    multiplyAdd(cosine, stepRe, -(sine * stepIm)).store(phases.re + row);
    multiplyAdd(cosine, stepIm, sine * stepRe).store(phases.im + row);
  }
}

template <class Set>
constexpr AddFilteredInPacks filtersOf = {filterInPacks<Pack<Set>>,
                                          filterInPacks<Pack<typename Set::Double>>,
                                          turnInPacks<Pack<typename Set::Double>>};

}  // namespace pistonfield
