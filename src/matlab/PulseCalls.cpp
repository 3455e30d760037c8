#include "matlab/PulseCalls.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "field/echo.h"
#include "field/pulse.h"
#include "field/pulse/EvenTimes.h"
#include "matlab/HostArrays.h"

namespace pistonfield {
namespace {

using Pistons = std::vector<DelayedPiston>;

Pistons delayedPistonsOf(const mxArray* structure) {
  Pistons pistons = delayed(pistonsOf(structure));
  const double* const delays = realsIn(structure, "delays", pistons.size());
  for (std::size_t m = 0; m < pistons.size(); ++m) pistons[m].delay = delays[m];
  return pistons;
}

Medium mediumOf(const mxArray* numbers) {
  const std::vector<double> values = realsOf(numbers);
  require(values.size() == 4);
  Medium medium;
  medium.speed = values[0];
  medium.attenuation = values[1];
  medium.exponent = values[2];
  medium.reference = values[3];
  return medium;
}

Excitation excitationOf(const mxArray* structure) {
  return {realsOf(memberOf(structure, "samples")), *realsIn(structure, "rate", 1),
          *realsIn(structure, "start", 1)};
}

mxArray* structOf(const Excitation& excitation) {
  const char* names[] = {"samples", "rate", "start"};
  mxArray* const result = mxCreateStructMatrix(1, 1, 3, names);
  mxSetField(result, 0, "samples", columnOf(excitation.samples));
  mxSetField(result, 0, "rate", mxCreateDoubleScalar(excitation.rate));
  mxSetField(result, 0, "start", mxCreateDoubleScalar(excitation.start));
  return result;
}

mxArray* described(const PulseReport& report) {
  const char* names[] = {"bound", "nodes", "frequencies"};
  mxArray* const result = mxCreateStructMatrix(1, 1, 3, names);
  mxSetField(result, 0, "bound", mxCreateDoubleScalar(report.bound));
  mxSetField(result, 0, "nodes", mxCreateDoubleScalar(report.nodes));
  mxSetField(result, 0, "frequencies",
             mxCreateDoubleScalar(static_cast<double>(report.frequencies)));
  return result;
}

mxArray* listed(const TimeAxis& times) {
  std::vector<double> values(times.count);
  for (std::size_t m = 0; m < times.count; ++m)
    values[m] = times.start + static_cast<double>(m) / times.rate;
  return columnOf(values);
}

/// What is computed against time, by `source`, at points. The arguments from `last` on are the
/// rate, the times or an empty array, the tolerance and the progress bar.
template <class Source>
void computeAgainstTime(const Source& source, const mxArray* points, const mxArray* last[],
                        int nlhs, mxArray* plhs[], std::optional<ProgressBar>& shown) {
  const Position* const positions = positionsOf(points);
  const std::size_t count = mxGetN(points);
  const double rate = numberOf(last[0]);
  const std::vector<double> asked = realsOf(last[1]);
  const TimeAxis times = asked.empty() ? source.times(positions, count, rate)
                                       : axisThrough(asked.data(), asked.size(), rate);
  PulseOptions options;
  options.tolerance = numberOf(last[2]);
  ProgressBar& bar = shown.emplace(last[3]);
  options.progress = [&](double fraction) { bar.update(fraction); };
  PulseReport report;
  plhs[0] = arrayOf(source.at(positions, count, times, options, &report),
                    {static_cast<mwSize>(times.count), static_cast<mwSize>(count)});
  bar.complete();
  if (nlhs > 1) plhs[1] = listed(times);
  if (nlhs > 2) plhs[2] = described(report);
}

/// The delays after steering or focusing, `aim`, at one point.
template <class Aim>
mxArray* aimed(const mxArray* prhs[], Aim aim) {
  const Position* const centres = positionsOf(prhs[1]);
  Pistons pistons(mxGetN(prhs[1]));
  const std::vector<double> delays = realsOf(prhs[2]);
  require(delays.size() == pistons.size());
  const Position* const at = positionsOf(prhs[3]);
  require(mxGetN(prhs[3]) == 1);
  for (std::size_t m = 0; m < pistons.size(); ++m) {
    pistons[m].piston.centre = centres[m];
    pistons[m].delay = delays[m];
  }
  std::vector<double> result;
  for (const DelayedPiston& piston : aim(pistons, *at, scalarOf(prhs[4])))
    result.push_back(piston.delay);
  return columnOf(result);
}

}  // namespace

bool callForPulse(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[],
                  std::optional<ProgressBar>& bar) {
  const std::string what = textOf(prhs[0]);
  const auto is = [&](const char* name, int arguments, int results) {
    return what == name && nlhs <= results && nrhs == 1 + arguments;
  };
  if (is("pulse", 8, 3))
    computeAgainstTime(Pulse(delayedPistonsOf(prhs[2]), mediumOf(prhs[3]), excitationOf(prhs[4])),
                       prhs[1], prhs + 5, nlhs, plhs, bar);
  else if (is("echo", 9, 3))
    computeAgainstTime(Echo(delayedPistonsOf(prhs[2]), delayedPistonsOf(prhs[3]), mediumOf(prhs[4]),
                            excitationOf(prhs[5])),
                       prhs[1], prhs + 6, nlhs, plhs, bar);
  else if (is("burst", 4, 1))
    plhs[0] = structOf(
        toneBurst(scalarOf(prhs[1]), scalarOf(prhs[2]), scalarOf(prhs[3]), textOf(prhs[4])));
  else if (is("gauss", 3, 1))
    plhs[0] = structOf(gaussPulse(scalarOf(prhs[1]), scalarOf(prhs[2]), scalarOf(prhs[3])));
  else if (is("steereddelays", 4, 1))
    plhs[0] = aimed(prhs, [](Pistons pistons, const Position& direction, double speed) {
      return steered(std::move(pistons), direction, speed);
    });
  else if (is("focuseddelays", 4, 1))
    plhs[0] = aimed(prhs, [](Pistons pistons, const Position& focus, double speed) {
      return focused(std::move(pistons), focus, speed);
    });
  else
    return false;
  return true;
}

}  // namespace pistonfield
