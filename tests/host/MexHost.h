#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/MexArray.h"

namespace host {

/// What a call of the module left behind.
struct Outcome {
  std::optional<std::string> error;  // the message, if one ended the call
  std::string printed;               // through mexPrintf
  std::string standardOutput;        // of the process
  std::string standardError;
  std::vector<mxArray> results;
  double seconds = 0;        // between the entry into the module and the way out
  int checks = 0;            // how often the module asked whether the user interrupts
  bool interrupted = false;  // whether that ended the call
};

/// A host for one MEX module, as honest as the real ones:
///
/// - an error of mexErrMsgTxt unwinds the module as an exception derived from std::exception;
/// - one raised while another unwinds ends the process, and so does any other exception that leaves
///   the module;
/// - access to the data of what holds no numbers ends the process or raises an error;
/// - arrays that a call has made are taken back after it.
class MexHost {
 public:
  /// Loads the module; throws std::runtime_error when it cannot.
  explicit MexHost(const std::string& path);
  MexHost(const MexHost&) = delete;
  MexHost& operator=(const MexHost&) = delete;
  ~MexHost();

  /// [results{1:nlhs}] = module(arguments{:}). The user interrupts before the nth time that the
  /// module asks, or never.
  Outcome call(int nlhs, const std::vector<mxArray>& arguments, int interruptedCheck = 0) const;

  /// The address of a function that the module exports; null if it has none of that name.
  void* symbol(const char* name) const;

 private:
  void* module_;
};

}  // namespace host
