#pragma once

#include <string>
#include <vector>

#include "host/MexCall.h"

namespace host {

/// A host for one MEX module, which it loads, and whose standard output it catches.
class MexHost {
 public:
  /// Loads the module; throws std::runtime_error when it cannot.
  explicit MexHost(const std::string& path);
  MexHost(const MexHost&) = delete;
  MexHost& operator=(const MexHost&) = delete;
  ~MexHost();

  /// [results{1:nlhs}] = module(arguments{:})
  Outcome call(int nlhs, const std::vector<mxArray>& arguments, int interruptedCheck = 0) const;

  /// The address of a function that the module exports; null if it has none of that name.
  void* symbol(const char* name) const;

 private:
  void* module_;
};

}  // namespace host
