#pragma once

#include <mex.h>

#include <chrono>

namespace pistonfield {

/// Ends the work of the library.
struct Stopped {};

/// Shows the progress of a call, by the function `bar` of the host, and ends it on Ctrl-C.
///
/// An error of the host must not pass through the library, so the work is ended by a Stopped, and
/// the error is raised after that. (In Octave an interruption of the progress bar passes through
/// the library, as an exception of C++.)
class ProgressBar {
 public:
  /// `bar` may be an empty array.
  explicit ProgressBar(const mxArray* bar);
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();

  /// Throws Stopped if the user has interrupted the call or the bar has failed.
  void update(double fraction);

  /// Shows that the work is complete, if a bar is shown.
  void complete();

  /// The error of the function, or null if there was none.
  mxArray* failure() const { return failure_; }

 private:
  using Clock = std::chrono::steady_clock;

  void show(double fraction);

  mxArray* const bar_;  // the host's functions take it as not const
  const Clock::time_point start_ = Clock::now();
  Clock::time_point next_ = start_ + std::chrono::milliseconds(500);
  double shown_ = 0;  // how many characters
  mxArray* failure_ = nullptr;
};

}  // namespace pistonfield
