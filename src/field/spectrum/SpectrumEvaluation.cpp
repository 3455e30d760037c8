#include "field/spectrum/SpectrumEvaluation.h"

#include <algorithm>
#include <cmath>

#include "field/spectrum/Paths.h"
#include "field/spectrum/SpectrumOfTile.h"
#include "parallel/Cores.h"
#include "parallel/Spread.h"

namespace pistonfield {
namespace {

/// How many wave numbers are evaluated between two calls of `progress`, at most.
constexpr std::size_t bandLength = 512;

/// How many points times pistons times wave numbers a core evaluates between them, about: some
/// hundredths of a second if they are interpolated.
constexpr std::size_t pieceWork = 1 << 21;

constexpr std::size_t mostPistonsTogether = 64;

/// Pistons in groups of `together`.
std::vector<PistonsTogether> inGroups(const std::vector<Field::Piston>& pistons,
                                      std::size_t together, double tolerance) {
  std::vector<PistonsTogether> groups;
  for (std::size_t first = 0; first < pistons.size(); first += together) {
    const std::size_t last = std::min(first + together, pistons.size());
    groups.push_back(
        {{pistons.begin() + static_cast<std::ptrdiff_t>(first),
          pistons.begin() + static_cast<std::ptrdiff_t>(last)},
         tolerance * static_cast<double>(last - first) / static_cast<double>(pistons.size()),
         0});
    for (const Field::Piston& piston : groups.back().pistons)
      groups.back().weight += std::abs(piston.weight);
  }
  return groups;
}

/// The estimated cost of a piston at a point, from some of them.
double costOf(const std::vector<PistonsTogether>& groups, const WaveNumbers& waves,
              std::vector<Paths>& points) {
  constexpr std::size_t mostGroups = 16;
  const std::size_t tried = std::min(groups.size(), mostGroups);
  double cost = 0, pistons = 0;
  for (std::size_t n = 0; n < tried; ++n) {
    const PistonsTogether& group = groups[groups.size() * n / tried];
    for (Paths& paths : points) {
      paths.measure(group.pistons.data(), group.pistons.size());
      pistons += static_cast<double>(group.pistons.size());
      cost += bandPlan(std::min(waves.count, bandLength), std::fabs(waves.step) * paths.range,
                       group.pistons.size(), errorOfWave(group))
                  .cost;
    }
  }
  return cost / pistons;
}

/// Groups for the fastest evaluation.
std::vector<PistonsTogether> fastestGroups(const std::vector<Field::Piston>& pistons,
                                           const WaveNumbers& waves, const Points& points,
                                           double tolerance) {
  constexpr std::size_t mostPoints = 16;
  std::vector<Paths> some;
  const std::size_t tried = std::min(points.count(), mostPoints);
  for (std::size_t n = 0; n < tried; ++n) some.emplace_back(points, points.count() * n / tried, 1);
  std::vector<PistonsTogether> fastest = inGroups(pistons, 1, tolerance);
  double least = costOf(fastest, waves, some);
  for (std::size_t together = 2; together <= std::min(pistons.size(), mostPistonsTogether);
       together *= 2) {
    std::vector<PistonsTogether> groups = inGroups(pistons, together, tolerance);
    const double cost = costOf(groups, waves, some);
    if (!(cost < least)) continue;
    least = cost;
    fastest = std::move(groups);
  }
  return fastest;
}

}  // namespace

double mostOf(const WaveNumbers& waves) {
  const double last = std::fma(waves.step, static_cast<double>(waves.count - 1), waves.first);
  return std::max(std::fabs(waves.first), std::fabs(last));
}

double waveNumberAt(const WaveNumbers& waves, double m) {
  const double k = std::fma(waves.step, m, waves.first);
  return std::fabs(k) < 0x1p-51 * mostOf(waves) ? 0 : k;
}

SpectrumEvaluation::SpectrumEvaluation(const std::vector<Field::Piston>& pistons,
                                       const WaveNumbers& waveNumbers, const Points& points,
                                       double tolerance)
    : waves_(waveNumbers),
      points_(points),
      mostWaveNumber_(mostOf(waveNumbers)),
      groups_(fastestGroups(pistons, waveNumbers, points, tolerance)),
      mostTogether_(groups_.front().pistons.size()),
      used_(nothingUsed()) {}

const BandInterpolation& SpectrumEvaluation::interpolation(const BandPlan& plan) {
  const std::lock_guard lock(mutex_);
  auto& known = interpolations_[{plan.nodes, plan.length}];
  if (!known) known = std::make_unique<const BandInterpolation>(plan.nodes, plan.length);
  return *known;
}

void SpectrumEvaluation::run(const std::vector<std::size_t>& indices,
                             std::complex<double>* pressures, Work& work) {
  std::mutex usedMutex;
  const std::size_t bands = (waves_.count + bandLength - 1) / bandLength,
                    length = (waves_.count + bands - 1) / bands;
  const std::size_t unit = pointsOfTile * length * mostTogether_;
  const std::size_t groupsAtOnce =
      std::min(groups_.size(), std::max<std::size_t>(pieceWork / unit, 1));
  const std::size_t pointsAtOnce = std::max<std::size_t>(pieceWork / (unit * groupsAtOnce), 1) *
                                   parallel::cores() * pointsOfTile;
  for (std::size_t begin = 0; begin < waves_.count; begin += length)
    for (std::size_t group = 0; group < groups_.size(); group += groupsAtOnce)
      for (std::size_t piece = 0; piece < points_.count(); piece += pointsAtOnce) {
        const std::size_t end = std::min(begin + length, waves_.count),
                          lastGroup = std::min(group + groupsAtOnce, groups_.size()),
                          inPiece = std::min(pointsAtOnce, points_.count() - piece);
        parallel::spread((inPiece + pointsOfTile - 1) / pointsOfTile, 1,
                         [&](std::uint64_t first, std::uint64_t last) {
                           Used used = nothingUsed();
                           for (std::uint64_t n = first; n < last; ++n) {
                             const std::size_t at = n * pointsOfTile;
                             SpectrumOfTile tile(*this, indices, pressures, piece + at,
                                                 std::min(pointsOfTile, inPiece - at), used);
                             for (std::size_t g = group; g < lastGroup; ++g)
                               tile.add(groups_[g], begin, end);
                           }
                           const std::lock_guard lock(usedMutex);
                           used_ = bothUsed(used_, used);
                         });
        work.advance(static_cast<double>(inPiece) * static_cast<double>(lastGroup - group) /
                     static_cast<double>(groups_.size()) * static_cast<double>(end - begin));
        if (used_.excess > 1) return;
      }
}

}  // namespace pistonfield
