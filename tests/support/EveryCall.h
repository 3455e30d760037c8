#pragma once

#include <cuda_runtime.h>

#include <complex>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "emulation/TestControl.h"
#include "support/Step.h"

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

  Steps steps;
  bool isTimed = false;

  /// Whether the steps have every line of the first output, up to the last call.
  bool listsOutput = false;
};

/// Expects work to make the calls of its steps, no more and no less. Then runs it again and again,
/// each time with a later call failing, by itself or with all calls that follow, and expects
///
/// - the one report that its steps list, or the ending of a good run if the call is unchecked;
/// - the output of a good run up to there;
/// - as much device memory left as could not be freed, and no thread;
/// - a good run's ending from the next one.
class EveryCall {
 public:
  explicit EveryCall(pistonfield::emulation::TestControl& device) : device_(device) {}

  void failEach(const Work& work);

 private:
  struct Fault {
    cudaError_t error;
    bool lasting;
  };

  void expectSteps(const Steps& calls) const;
  void failNth(const Work& work, const Ending& good, std::size_t failed, const Fault& fault);
  void expectReport(const Step& step, const Ending& ending, cudaError_t error);
  void expectMemory(std::size_t failed, bool lasting) const;

  pistonfield::emulation::TestControl& device_;
};

}  // namespace support
