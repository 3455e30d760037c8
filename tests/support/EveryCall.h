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

// Makes each call of the CUDA runtime in a piece of work fail in turn.

namespace support {

/// The outcome of a piece of work.
struct Ending {
  /// A failure as reported to the error handler.
  struct Report {
    std::string condition;
    int line;
    std::string file;
  };

  std::vector<std::complex<double>> values;
  std::vector<Report> reports;
  std::string otherError;            // an error other than a report
  std::vector<std::string> outputs;  // what was printed, for each output
  std::string standardError;
};

struct Work {
  std::function<Ending()> run;

  /// Clears all faults and prepares the device so that `run` can succeed.
  std::function<void()> startAfresh;

  /// Whatever a good run needs if it follows a failed run without a fresh start.
  std::function<void()> goOn;

  Steps steps;
  bool isTimed = false;

  /// Whether the steps list every line of the first output up to the last call.
  bool listsOutput = false;
};

/// Expects the work to make exactly the calls of its steps. Then runs it again for each of them
/// with this call failing, alone or with all calls that follow, and expects
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
