#include "field/pulse/PulseInTime.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>

#include "field/Checks.h"
#include "field/Points.h"
#include "field/Vectors.h"
#include "field/Work.h"
#include "field/Zeros.h"
#include "field/pulse/PulsePeak.h"
#include "field/pulse/PulseSum.h"
#include "parallel/Cores.h"
#include "parallel/Spread.h"

namespace pistonfield {
namespace {

/// How many bins of a point are in use at once, about, so that a group's stay in the cache.
constexpr double mostBins = 1 << 14;

/// Points that a core evaluates at once, and how much work between two calls of `progress`: about
/// as many points times pistons.
constexpr std::size_t chunk = std::size_t{8} * pulsePoints;
constexpr double pieceWork = 1 << 17;

/// The pulses of one call, for one tolerance.
class Call {
 public:
  Call(PulseSum& sum, const Position* points, std::size_t count, const TimeAxis& times,
       double workOfPoint, int scale, double* pressures)
      : sum_(sum),
        points_(points),
        count_(count),
        times_(times),
        workOfPoint_(workOfPoint),
        scales_{std::ldexp(1.0, scale / 2), std::ldexp(1.0, scale - scale / 2)},
        pressures_(pressures) {}

  void run(const std::function<void(double)>& progress) {
    const bool oneByOne = sum_.sampleRate() != times_.rate;
    const std::size_t together =
        oneByOne ? 1 : static_cast<std::size_t>(std::max(mostBins / sum_.binsPerSample(), 64.0));
    const std::size_t blocks = (times_.count - 1) / together + 1;
    Work work(progress, static_cast<double>(blocks) * static_cast<double>(count_));
    work.advance(0);
    for (std::size_t first = 0; first < times_.count; first += together) {
      // Blocks of one axis have one offset: rounded anew, it could round up to a sample.
      const double steps = oneByOne ? static_cast<double>(first) : 0,
                   time =
                       times_.start * sum_.sampleRate() + steps * (sum_.sampleRate() / times_.rate),
                   sample = std::floor(time);
      if (first == 0 || oneByOne) sum_.setOffset((time - sample) / sum_.sampleRate());
      addBlock(first, std::min(together, times_.count - first),
               static_cast<long long>(sample) + (oneByOne ? 0 : static_cast<long long>(first)),
               work);
    }
  }

  double nodes() const { return nodes_; }
  bool isLost() const { return isLost_; }

 private:
  void addBlock(std::size_t first, std::size_t samples, long long sample, Work& work) {
    const std::size_t chunks = (count_ - 1) / chunk + 1;
    const auto inPiece = static_cast<std::size_t>(
        std::max(pieceWork / workOfPoint_ / chunk, static_cast<double>(parallel::cores())));
    for (std::size_t piece = 0; piece < chunks; piece += inPiece) {
      const std::size_t count = std::min(inPiece, chunks - piece);
      parallel::spread(count, 1, [&](std::uint64_t begin, std::uint64_t end) {
        PulseSum::Scratch scratch;
        for (std::size_t n = piece + begin; n < piece + end; ++n)
          for (std::size_t point = n * chunk; point < std::min((n + 1) * chunk, count_);
               point += pulsePoints)
            addGroup(point, first, samples, sample, scratch);
        const std::lock_guard lock(mutex_);
        nodes_ += scratch.nodes;
        isLost_ |= scratch.isLost;
      });
      work.advance(static_cast<double>(std::min((piece + count) * chunk, count_) - piece * chunk));
    }
  }

  /// Points that are not finite, and the rest of the last group, repeat a valid point.
  void addGroup(std::size_t point, std::size_t first, std::size_t samples, long long sample,
                PulseSum::Scratch& scratch) const {
    const int inGroup = static_cast<int>(std::min<std::size_t>(pulsePoints, count_ - point));
    alignas(64) double x[pulsePoints], y[pulsePoints], z[pulsePoints];
    int valid = 0;
    while (valid < inGroup && !finite(points_[point + static_cast<std::size_t>(valid)])) ++valid;
    const auto rowOf = [&](int n) {
      return pressures_ + (point + static_cast<std::size_t>(n)) * times_.count + first;
    };
    const auto isValid = [&](int n) {
      return n < inGroup && finite(points_[point + static_cast<std::size_t>(n)]);
    };
    for (int n = 0; n < pulsePoints && valid < inGroup; ++n) {
      const Position& p = points_[point + static_cast<std::size_t>(isValid(n) ? n : valid)];
      x[n] = p[0];
      y[n] = p[1];
      z[n] = p[2];
    }
    for (int n = 0; n < inGroup; ++n)
      if (!isValid(n)) std::fill_n(rowOf(n), samples, std::numeric_limits<double>::quiet_NaN());
    if (valid == inGroup) return;
    sum_.evaluate(x, y, z, sample, samples, scratch,
                  [&](int n, std::size_t from, std::size_t count, const double* values) {
                    if (!isValid(n)) return;
                    std::transform(values, values + count, rowOf(n) + from,
                                   [&](double value) { return value * scales_[0] * scales_[1]; });
                  });
  }

  PulseSum& sum_;
  const Position* points_;
  std::size_t count_;
  const TimeAxis& times_;
  double workOfPoint_;
  double scales_[2];  // factors, whose product may be too large a number
  double* pressures_;
  std::mutex mutex_;
  double nodes_ = 0;
  bool isLost_ = false;
};

/// So that products and sums do not overflow; powers of 2, so that nothing is rounded.
int scaleOf(const std::vector<DelayedPiston>& pistons) {
  double largest = 0;
  for (const DelayedPiston& delayed : pistons)
    largest = std::max(largest, std::fabs(delayed.piston.weight.real()));
  return largest > 0 ? std::ilogb(largest) : 0;
}

int scaleOf(const std::vector<double>& samples) {
  double largest = 0;
  for (const double sample : samples) largest = std::max(largest, std::fabs(sample));
  return largest > 0 ? std::ilogb(largest) : 0;
}

}  // namespace

std::vector<double> pulsesInTime(std::vector<DelayedPiston> pistons, double speed,
                                 const Excitation& excitation, double mostCoordinate,
                                 const Position* points, std::size_t count, const TimeAxis& times,
                                 const PulseOptions& options, PulseReport& report) {
  std::vector<double> pressures = zeros<double>(count * times.count);
  const int weightScale = scaleOf(pistons), sampleScale = scaleOf(excitation.samples),
            scale = weightScale + sampleScale;
  Excitation scaled{excitation.samples, excitation.rate, 0};
  for (double& sample : scaled.samples) sample = std::ldexp(sample, -sampleScale);
  pistons.erase(
      std::remove_if(pistons.begin(), pistons.end(),
                     [](const DelayedPiston& delayed) { return isSilent(delayed.piston); }),
      pistons.end());
  for (DelayedPiston& delayed : pistons) {
    delayed.piston.weight = std::ldexp(delayed.piston.weight.real(), -weightScale);
    delayed.delay += excitation.start;
  }
  const ExcitationSpline spline(scaled);
  const PulseSpectrum spectrum(spline);
  if (pistons.empty() || !(spectrum.centre() > 0)) {
    for (std::size_t n = 0; n < count; ++n)
      if (!finite(points[n]))
        std::fill_n(&pressures[n * times.count], times.count,
                    std::numeric_limits<double>::quiet_NaN());
    return pressures;
  }
  double peak = peakOfPulses(pistons, spline, spectrum, speed, mostCoordinate,
                             ListPoints(points, count), options.progress);
  double excess = std::numeric_limits<double>::infinity();
  // The few points of which the peak was estimated may have missed it.
  for (int attempt = 0; attempt < 2 && peak > 0; ++attempt) {
    const double tolerance = options.tolerance * peak;
    PulseSum sum(pistons, spline, spectrum, speed, mostCoordinate, tolerance, times.rate);
    const double perPoint = static_cast<double>(pistons.size()) + static_cast<double>(times.count) *
                                                                      sum.pulseSamples() *
                                                                      sum.binsPerSample() / 1e3;
    Call call(sum, points, count, times, perPoint, scale, pressures.data());
    call.run(options.progress);
    excess = call.isLost() ? std::numeric_limits<double>::infinity() : sum.excess();
    report.nodes += call.nodes();
    report.bound = std::ldexp(sum.bound(), scale);
    if (!(excess > 1)) break;
    double largest = 0;
    for (const double p : pressures) largest = std::max(largest, std::fabs(p));
    largest = std::ldexp(largest, -scale);
    if (std::isinf(excess) || !(largest - sum.bound() > 1.5 * peak)) break;
    peak = largest - sum.bound();
    std::fill(pressures.begin(), pressures.end(), 0.0);
  }
  if (!(excess <= 1)) refuseTolerance(1.1 * options.tolerance * excess);
  return pressures;
}

}  // namespace pistonfield
