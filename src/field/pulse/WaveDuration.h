#pragma once

#include <functional>

#include "field/pulse/Link.h"

namespace pistonfield {

/// When waves of an excitation that have travelled through a medium are negligible: before `begin`
/// and after `end`, relative to the arrival of what is emitted at the time 0 and travels at the
/// speed of the medium.
struct WaveDuration {
  double begin, end;
  double rest;  ///< an upper bound of what is neglected
};

/// Returns when waves q are negligible after paths from `nearest` to `farthest`. With
/// the number m of apertures, they are
///
///     q(τ) = 1/2π ∫ V(ω)·weight(ω)·(iK)^m·exp(−i(K − ω/c)·path)·exp(iωτ) dω
///
/// The pressure at a point is Σ weight/2π ∬ q(t − delay − R/c)/R dS. Without loss, q ends when the
/// excitation does. With loss it has tails that fall with a power of the time; they are computed
/// for some paths, at the excitation's rate, over many times its duration.
///
/// A signal is those waves from its first to its last path. One that is repeated with its duration,
/// from the first wave to the end of the last, is changed by what is neglected.
///
/// @param most  of what is neglected. It may be more if waves last too long
WaveDuration waveDuration(const Link& link, const Extent& extent, const Band& band, double most,
                          const std::function<void(double)>& progress);

}  // namespace pistonfield
