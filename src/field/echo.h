#pragma once

#include <cstddef>
#include <vector>

#include "pulse.h"

// What pistons receive from scatterers in a pulse, against time:
//
//     #include <pistonfield/echo.h>
//
//     using namespace pistonfield;
//     const Echo echo(transmit, receive, Medium{1540, 0.5}, toneBurst(5e6, 2, 100e6));
//     const TimeAxis times = echo.times(scatterers, 50e6);
//     const std::vector<double> e = echo.at(scatterers, times);    // of n at m: m + times.count·n
//
// Units are those of pulse.h. Scatterers are points, and their echoes do not reach each other.
//
// The echo is, with the spectrum V(ω) of the excitation and the pressures P that Field gives for
// the pistons that transmit and for those that receive, with weights weight·exp(−iω·delay),
//
//     e(t) = 1/2π ∫ V(ω)·i·P_transmit(r, ω)·i·P_receive(r, ω)·exp(iωt) dω
//
// so it is what the scatterer would radiate to the pistons that receive if these transmitted the
// pressure at the scatterer: by reciprocity, a point radiates to pistons as they do to the point.
// Receiving pistons add what arrives, by their weights, each later by its delay.
//
// e has the unit of the velocity v, as the pressure of pulse.h has. A scatterer that turns a
// pressure p into waves S·p·exp(−iKR)/R, with its length S of scattering, gives rise to the sum F
// of weight·∬ pressure dS over the pistons, with
//
//     dF/dt = 2πc·S·ρc·e
//
// if waves are not attenuated and pistons do not reflect. A signal of many scatterers is the sum of
// their echoes times their strengths.

namespace pistonfield {

/// Echoes of point scatterers.
class Echo {
 public:
  /// Throws a FieldError if an argument is invalid. Transmitting and receiving pistons may be the
  /// same.
  Echo(std::vector<DelayedPiston> transmit, std::vector<DelayedPiston> receive,
       const Medium& medium, Excitation excitation);

  /// As Pulse::times, for the first and the last echo.
  TimeAxis times(const Position* scatterers, std::size_t count, double rate) const;
  TimeAxis times(const std::vector<Position>& scatterers, double rate) const;

  /// Returns the echoes: that of scatterer n at the time m is number m + times.count·n. Tolerance,
  /// scatterers that are not finite and errors are as for Pulse::at. In a medium that attenuates,
  /// no scatterer may be straight behind a piston.
  std::vector<double> at(const Position* scatterers, std::size_t count, const TimeAxis& times,
                         const PulseOptions& options = {}, PulseReport* report = nullptr) const;
  std::vector<double> at(const std::vector<Position>& scatterers, const TimeAxis& times,
                         const PulseOptions& options = {}, PulseReport* report = nullptr) const;

 private:
  std::vector<std::vector<DelayedPiston>> apertures_;
  Medium medium_;
  Excitation excitation_;
  double frequency_ = 0;  // the excitation's centre of energy
};

}  // namespace pistonfield
