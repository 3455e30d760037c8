#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <complex>
#include <cstddef>
#include <exception>
#include <functional>
#include <future>
#include <utility>
#include <vector>

#include "field/field.h"
#include "field/pulse.h"

namespace pistonfield {

/// What Python reads of a Work; _core.py has the same fields.
struct Answer {
  const char* error = nullptr;      ///< why there is no result
  const double* numbers = nullptr;  ///< a complex number is two
  std::size_t count = 0;
  /// Of fields: the least and the most order, whether single and double precision were used, nodes
  /// and bound. Of pulses: the start, the rate and the count of the times, bound, nodes,
  /// frequencies.
  std::array<double, 6> used = {};
};

/// A call of the library and its result, which Python destroys when no array refers to it any more.
///
/// Long work has a thread of its own. Python's thread waits in Python's code, where Ctrl-C and the
/// user's function for progress may raise exceptions, and stops the work if they do.
class Work : public Answer {
 public:
  Work() = default;
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;
  ~Work() { stop(); }

  /// Calls compute(), which sets the result. Returns whether it has ended.
  template <class Compute>
  bool run(bool isShort, Compute compute) {
    const auto answer = [this, compute] {
      try {
        compute();
      } catch (const std::exception& exception) {
        caught = std::current_exception();
        error = exception.what();
      }
    };
    if (!isShort) {
      try {
        running = std::async(std::launch::async, answer);
        return false;
      } catch (const std::exception&) {  // the system starts no more threads
      }
    }
    answer();
    return true;
  }

  /// Returns whether long work ended within this time.
  bool wait(double seconds) const {
    return running.wait_for(std::chrono::duration<double>(seconds)) == std::future_status::ready;
  }

  /// Ends long work, without a result unless it has one.
  void stop() {
    isStopped = true;
    if (running.valid()) running.wait();
  }

  /// How much of the work is done, 0 to 1.
  double fraction() const { return done; }

  /// For FieldOptions::progress.
  std::function<void(double)> progress() {
    return [this](double fraction) {
      if (isStopped) throw FieldError("The computation was stopped.");
      done = fraction;
    };
  }

  void setResult(std::vector<double> values) {
    reals = std::move(values);
    numbers = reals.data();
    count = reals.size();
  }

  void setResult(std::vector<std::complex<double>> values, const FieldReport& report) {
    pressures = std::move(values);
    numbers = reinterpret_cast<const double*>(pressures.data());
    count = 2 * pressures.size();
    used = {static_cast<double>(report.leastOrder),
            static_cast<double>(report.mostOrder),
            static_cast<double>(report.single),
            static_cast<double>(report.precise),
            report.nodes,
            report.bound};
  }

  void setResult(std::vector<double> values, const TimeAxis& times, const PulseReport& report) {
    setResult(std::move(values));
    used = {times.start,  times.rate,   static_cast<double>(times.count),
            report.bound, report.nodes, static_cast<double>(report.frequencies)};
  }

 private:
  std::vector<double> reals;
  std::vector<std::complex<double>> pressures;
  std::exception_ptr caught;
  std::atomic<double> done = 0;
  std::atomic<bool> isStopped = false;
  std::future<void> running;
};

}  // namespace pistonfield
