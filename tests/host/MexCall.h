#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/MexArray.h"
#include "mex.h"

namespace host {

/// What a call of the module left behind.
struct Outcome {
  std::optional<std::string> error;  // the message, if one ended the call
  int errorsRaised = 0;              // by the module
  std::string printed;               // through mexPrintf
  std::string standardOutput;        // of the process, if somebody caught it
  std::string standardError;
  std::vector<mxArray> results;
  double seconds = 0;        // between the entry into the module and the way out
  int checks = 0;            // how often the module asked whether the user interrupts
  bool interrupted = false;  // whether that ended the call
};

using MexFunction = decltype(mexFunction);

/// [results{1:nlhs}] = module(arguments{:}), by a host as honest as the real ones:
///
/// - an error of mexErrMsgTxt unwinds the module as an exception derived from std::exception;
/// - one raised while another unwinds ends the process, and so do one that the module keeps to
///   itself and any other exception that leaves the module;
/// - an array that finds no memory is an error;
/// - access to the data of what holds no numbers ends the process or raises an error;
/// - arrays that a call has made are taken back after it, texts of mxArrayToString are not, and
/// ones
///   that the module keeps end the process.
///
/// The user interrupts when the module asks for the nth time, or never.
Outcome call(MexFunction* function, int nlhs, const std::vector<mxArray>& arguments,
             int interruptedCheck = 0);

/// Whether this thread runs code of a module: one is being called, and does not print or raise an
/// error, for which a host keeps memory of its own.
bool insideModule();

}  // namespace host
