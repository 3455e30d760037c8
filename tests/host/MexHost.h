#pragma once

#include <string>
#include <vector>

#include "host/MexCall.h"

namespace host {

/// Loads one MEX module, calls it and captures its standard output.
class MexHost {
 public:
  /// Loads the module; throws std::runtime_error on failure.
  explicit MexHost(const std::string& path);
  MexHost(const MexHost&) = delete;
  MexHost& operator=(const MexHost&) = delete;
  ~MexHost();

  /// [results{1:nlhs}] = module(arguments{:})
  Outcome call(int nlhs, const std::vector<mxArray>& arguments, int interruptedCheck = 0) const;

  /// The address of a function that the module exports, or null if it exports none with this name.
  void* symbol(const char* name) const;

 private:
  void* module_;
};

}  // namespace host
