#pragma once

#include <functional>
#include <utility>

namespace pistonfield {

/// How much of a call's work is done.
class Work {
 public:
  /// `progress` may be empty.
  Work(std::function<void(double)> progress, double total)
      : progress_(std::move(progress)), total_(total) {}

  /// To be called on the calling thread, between pieces of work. May throw what the caller's
  /// function throws.
  void advance(double amount) {
    done_ += amount;
    if (progress_) progress_(done_ < total_ ? done_ / total_ : 1);
  }

 private:
  std::function<void(double)> progress_;
  double total_, done_ = 0;
};

}  // namespace pistonfield
