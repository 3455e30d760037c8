#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/MexArray.h"
#include "mex.h"

namespace host {

/// The outcome of a call of the module.
struct Outcome {
  std::optional<std::string> error;  // the message, if one ended the call
  int errorsRaised = 0;              // how many errors the module raised
  std::string printed;               // printed through mexPrintf
  std::string standardOutput;        // that of the process, if it was captured
  std::string standardError;
  std::vector<mxArray> results;
  double seconds = 0;        // from entering the module to leaving it
  int checks = 0;            // how often the module checked for an interruption
  bool interrupted = false;  // whether an interruption ended the call
};

using MexFunction = decltype(mexFunction);

/// Calls [results{1:nlhs}] = module(arguments{:}) like the real hosts, but more strictly:
///
/// - an error of mexErrMsgTxt unwinds the module as an exception derived from std::exception;
/// - an error that is raised while another unwinds ends the process, and so does an error that the
///   module catches and does not rethrow, or any other exception that leaves the module;
/// - an array for which there is no memory is an error;
/// - access to the data of an array without numbers ends the process or raises an error;
/// - arrays that a call has made are freed after it, but texts of mxArrayToString are not; texts
///   that the module does not free end the process.
///
/// The user interrupts at the module's nth check for an interruption, or never.
Outcome call(MexFunction* function, int nlhs, const std::vector<mxArray>& arguments,
             int interruptedCheck = 0);

/// Whether this thread is running code of a module: a call is in progress, and it is not printing
/// or raising an error, for which a host has its own memory.
bool insideModule();

}  // namespace host
