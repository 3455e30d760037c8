#pragma once

#include <cuda_runtime.h>

#include <complex>
#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "emulation/TestControl.h"
#include "support/CheckSites.h"

// Makes every call of the CUDA runtime fail that some work makes, one after the other.

namespace support {

/// What a piece of work left behind.
struct Ending {
  /// A failure as the error handler is told.
  struct Report {
    std::string condition;
    int line;
    std::string file;
  };

  std::vector<std::complex<double>> values;
  std::vector<Report> reports;
  std::string otherError;            // that is no report
  std::vector<std::string> outputs;  // what was printed, on every way out
  std::string standardError;
};

struct Work {
  std::function<Ending()> run;

  /// Forgets all faults and makes the device such that `run` can succeed.
  std::function<void()> startAfresh;

  /// What a good run needs after one that failed, if it follows without a fresh start.
  std::function<void()> goOn;

  /// Whether its last cudaFree is that of a destructor, which has nobody to tell.
  bool releasesSilently = false;
};

/// Runs work again and again, each time with a later call failing, by itself or with all calls that
/// follow, and expects
///
/// - the one report that the call's place in the record asks for, with the text that the sources
///   say, or the ending of a good run if nobody looks at the call's answer;
/// - the output of a good run up to there;
/// - as much device memory left as could not be freed, and no thread;
/// - a good run's ending from the next one.
class EveryCall {
 public:
  explicit EveryCall(emulation::TestControl& device) : device_(device) {}

  void failEach(const Work& work);

  /// The places of the sources that have reported.
  const std::set<CheckSite>& reported() const { return reported_; }

  /// The functions of the runtime that have failed.
  const std::set<std::string>& failed() const { return failed_; }

 private:
  struct Fault {
    cudaError_t error;
    bool lasting;
  };
  using Calls = std::vector<emulation::Call>;

  std::size_t failNth(const Work& work, const Ending& good, std::size_t nth, const Fault& fault);
  std::optional<CheckSite> siteOf(const Ending& ending) const;
  void expectReport(const CheckSite& site, const Ending& ending, const emulation::Call& call,
                    cudaError_t error) const;
  void expectMemory(const Calls& calls, std::size_t failed, bool lasting) const;

  emulation::TestControl& device_;
  const std::set<CheckSite> sites_ = checkSites();
  std::set<CheckSite> reported_;
  std::set<std::string> failed_;
  std::set<CheckSite> reportedInLoop_;
};

}  // namespace support
