#pragma once

#include "FastNearfield/nodes/NodeSum.h"
#include "FastNearfield/nodes/SineCosine.h"

// Evaluates the nodes of a rule in a plain loop, which the compiler vectorizes for an instruction
// set.
//
// This header must not define functions that other files share: the linker could give those files
// the functions compiled here, with instructions that not every machine has.

namespace pistonfield {

/// For registers that hold `width` numbers.
template <class Set, int width, class T>
class NodeEvaluation {
 public:
  static NodeSum<T> sum(const NodeImages<T>& nodes, int count, const NodeIntegrand<T>& f) {
    return nodes.map ? sum<true>(nodes, count, f) : sum<false>(nodes, count, f);
  }

 private:
  template <class, int, class>
  friend class NodeEvaluation;

  template <bool map>
  static NodeSum<T> sum(const NodeImages<T>& nodes, int count, const NodeIntegrand<T>& f) {
    constexpr int most = 64;
    NodeSum<T> sum{T(0), T(0)};
    for (int first = 0; first < count; first += most) {
      const int n = count - first < most ? count - first : most;
      alignas(64) T re[most], im[most];
      terms<map>({nodes.x + first, nodes.w + first, nodes.mappedX + first, nodes.mappedW + first,
                  map, nodes.half, nodes.mid},
                 n, f, re, im);
      for (int i = 0; i < n; ++i) {
        sum.re += re[i];
        sum.im += im[i];
      }
    }
    return sum;
  }

  template <bool map>
  static void terms(const NodeImages<T>& nodes, int count, const NodeIntegrand<T>& f, T* re,
                    T* im) {
    if (count >= width)
      termsInRegisters<map>(map ? nodes.x : nodes.mappedX, map ? nodes.w : nodes.mappedW,
                            map ? nodes.mappedX : nullptr, map ? nodes.mappedW : nullptr,
                            nodes.half, nodes.mid, count, f, re, im);
    else if constexpr (width > 1)
      NodeEvaluation<Set, width / 2, T>::template terms<map>(nodes, count, f, re, im);
  }

  /// Computes the terms register by register. The last register ends with the last node; if it
  /// would otherwise be partly empty, it repeats earlier nodes. If `map` is set, writes the images
  /// to mappedX and mappedW.
  template <bool map>
  static void termsInRegisters(const T* __restrict x, const T* __restrict w, T* __restrict mappedX,
                               T* __restrict mappedW, T half, T mid, int count, NodeIntegrand<T> f,
                               T* __restrict re, T* __restrict im) {
    const T minusK = -f.k;
    const int last = count - width;
    for (int next = 0; next < count; next += width) {
      const int first = next < last ? next : last;
      // The compiler could not vectorize the loop after unrolling it.
#pragma GCC unroll 1
      for (int lane = 0; lane < width; ++lane) {
        const int i = first + lane;
        const T node = map ? half * x[i] + mid : x[i];
        const T weight = map ? half * w[i] : w[i];
        if constexpr (map) {
          mappedX[i] = node;
          mappedW[i] = weight;
        }
        const T t = node * node + f.s2;
        const T r = squareRoot(f.z * f.z + t);
        const SineCosine<Set, T> e(r * minusK);
        re[i] = weight * ((e.cosine - f.expKzRe) / t);
        im[i] = weight * ((e.sine - f.expKzIm) / t);
      }
    }
  }

  static float squareRoot(float x) { return __builtin_sqrtf(x); }
  static double squareRoot(double x) { return __builtin_sqrt(x); }
};

}  // namespace pistonfield
