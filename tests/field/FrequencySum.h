#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <vector>

#include "field/DoubleIntegral.h"
#include "field/pulse.h"
#include "field/pulse/ExcitationSpline.h"

/// Signals by the definition of pulses in a medium that attenuates: the double integral at many
/// frequencies, whose repetitions are far apart. The powers are those of the C library.
class FrequencySum {
 public:
  using Complex = std::complex<double>;

  /// `period` is that of the repetitions. Frequencies are summed up to so many of the excitation's
  /// rates.
  FrequencySum(std::vector<std::vector<pistonfield::DelayedPiston>> apertures,
               const pistonfield::Medium& medium, const pistonfield::Excitation& excitation,
               double period, double rates = 2.2)
      : apertures_(std::move(apertures)), start_(excitation.start) {
    const pistonfield::ExcitationSpline spline(excitation);
    const double step = 2 * pi / period;
    double largest = 0;
    for (double omega = step; omega < rates * 2 * pi * excitation.rate; omega += step) {
      const Complex V = spline.spectrum(omega);
      largest = std::max(largest, std::abs(V));
      if (std::abs(V) < 1e-8 * largest) continue;
      const Complex K = waveNumber(medium, omega);
      if (-K.imag() <= K.real()) terms_.push_back({omega, K, V * step / pi});
    }
  }

  static Complex waveNumber(const pistonfield::Medium& medium, double omega) {
    const double y = medium.exponent, coefficient = medium.attenuation * 100 * std::log(10.) / 20 /
                                                    std::pow(2 * pi * 1e6, y);  // of ω^y
    double slowness = 1 / medium.speed;
    if (medium.reference > 0) {
      const double reference = 2 * pi * medium.reference;
      slowness += y == 1 ? -2 / pi * coefficient * std::log(omega / reference)
                         : coefficient * std::tan(pi * y / 2) *
                               (std::pow(omega, y - 1) - std::pow(reference, y - 1));
    }
    return {omega * slowness, -coefficient * std::pow(omega, y)};
  }

  /// The signal at a point, at each of the times.
  std::vector<double> operator()(const pistonfield::Position& p,
                                 const pistonfield::TimeAxis& times) const {
    std::vector<double> signal(times.count);
    for (const Term& term : terms_) {
      Complex factor = term.factor;
      for (const std::vector<pistonfield::DelayedPiston>& pistons : apertures_) {
        std::vector<pistonfield::Field::Piston> turned;
        for (const pistonfield::DelayedPiston& one : pistons) {
          turned.push_back(one.piston);
          turned.back().weight *= std::polar(1., -term.omega * one.delay);
        }
        factor *= Complex(0, 1) * DoubleIntegral(turned, term.K)(p);
      }
      for (std::size_t m = 0; m < times.count; ++m) {
        const double t = times.start + static_cast<double>(m) / times.rate - start_;
        signal[m] += (factor * std::polar(1., term.omega * t)).real();
      }
    }
    return signal;
  }

 private:
  static constexpr double pi = 3.14159265358979323846;

  struct Term {
    double omega;
    Complex K, factor;
  };

  std::vector<std::vector<pistonfield::DelayedPiston>> apertures_;
  double start_;
  std::vector<Term> terms_;
};
