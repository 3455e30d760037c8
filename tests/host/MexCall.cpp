#include "host/MexCall.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>
#include <utility>

namespace {

/// The exception that an error of the host throws.
class HostError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The exception that an interruption by the user throws.
class Interruption : public std::exception {};

/// What the host has recorded about the running call.
struct Call {
  std::string printed;
  std::vector<std::unique_ptr<mxArray>> arrays;
  std::map<void*, std::unique_ptr<char[]>> texts;
  int errorsRaised = 0;
  std::thread::id thread = std::this_thread::get_id();
  int checks = 0;
  int interruptedCheck = 0;
};
Call* current = nullptr;

std::atomic<bool> moduleRuns{false};
thread_local int hostFunctions = 0;

struct ModuleRun {
  ModuleRun() { moduleRuns = true; }
  ~ModuleRun() { moduleRuns = false; }
};

/// Marks the time during which the module is in a function of the host.
struct HostFunction {
  HostFunction() { ++hostFunctions; }
  ~HostFunction() { --hostFunctions; }
};

[[noreturn]] void die(const char* reason) {
  std::fprintf(stderr, "host: %s\n", reason);
  std::abort();
}

std::size_t elements(const mxArray* array) {
  std::size_t count = 1;
  for (const std::size_t size : array->dims) count *= size;
  return count;
}

bool isOneOf(const std::string& name, std::initializer_list<const char*> names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

bool mxIsChar(const mxArray* array) { return array->className == "char"; }
// As on current hosts, "sparse" is not a class name.
bool mxIsClass(const mxArray* array, const char* name) { return array->className == name; }
bool mxIsComplex(const mxArray* array) { return array->isComplex; }
bool mxIsDouble(const mxArray* array) { return array->className == "double"; }
bool mxIsLogical(const mxArray* array) { return array->className == "logical"; }
bool mxIsSparse(const mxArray* array) { return array->isSparse; }
bool mxIsNumeric(const mxArray* array) {
  return isOneOf(array->className, {"double", "single", "int8", "uint8", "int16", "uint16", "int32",
                                    "uint32", "int64", "uint64"});
}

std::size_t mxGetM(const mxArray* array) { return array->dims[0]; }
std::size_t mxGetN(const mxArray* array) {
  std::size_t count = 1;
  for (std::size_t d = 1; d < array->dims.size(); ++d) count *= array->dims[d];
  return count;
}

double* mxGetPr(const mxArray* array) {
  if (isOneOf(array->className, {"function_handle", "object"})) die("mxGetPr of what has no data");
  if (!mxIsDouble(array))  // reading this as doubles would read past its end
    return reinterpret_cast<double*>(const_cast<char*>(array->bytes.data()));
  return const_cast<double*>(array->re.data());
}

void* mxGetData(const mxArray* array) { return mxGetPr(array); }
void* mxGetImagData(const mxArray* array) { return const_cast<double*>(array->im.data()); }

double mxGetScalar(const mxArray* array) {
  if (!mxIsNumeric(array) && !mxIsLogical(array) && !mxIsChar(array))
    mexErrMsgTxt("mxGetScalar: no number");
  if (mxIsDouble(array)) {
    if (!array->re.empty()) return array->re[0];
  } else if (!array->bytes.empty()) {
    return array->bytes[0];
  }
  if (!array->isSparse) mexErrMsgTxt("mxGetScalar: empty");
  return 0;  // all elements of the sparse array are zero
}

char* mxArrayToString(const mxArray* array) try {
  if (!mxIsChar(array)) return nullptr;
  std::unique_ptr<char[]> text(new char[array->bytes.size() + 1]());
  std::copy(array->bytes.begin(), array->bytes.end(), text.get());
  char* const address = text.get();
  current->texts.emplace(address, std::move(text));
  return address;
} catch (const std::bad_alloc&) {
  mexErrMsgTxt("mxArrayToString: out of memory");
  return nullptr;
}

void mxFree(void* memory) {
  if (memory && current->texts.erase(memory) == 0) die("mxFree of what is not the host's");
}

mxArray* mxCreateNumericArray(mwSize ndim, const mwSize* dims, mxClassID classId,
                              mxComplexity complexity) try {
  if (classId != mxDOUBLE_CLASS) die("only doubles are made here");
  auto& array = current->arrays.emplace_back(std::make_unique<mxArray>());
  array->dims.assign(dims, dims + ndim);
  array->dims.resize(std::max<std::size_t>(ndim, 2), 1);
  array->re.resize(elements(array.get()));
  array->isComplex = complexity == mxCOMPLEX;
  if (array->isComplex) array->im.resize(array->re.size());
  return array.get();
} catch (const std::bad_alloc&) {
  mexErrMsgTxt("mxCreateNumericArray: out of memory");
  return nullptr;
}

int mexPrintf(const char* format, ...) {
  const HostFunction host;
  std::va_list arguments;
  va_start(arguments, format);
  char text[4096];
  const int length = std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  current->printed += text;
  return length;
}

void mexErrMsgTxt(const char* message) {
  const HostFunction host;
  if (std::uncaught_exceptions() > 0) die("an error was raised while another one unwinds");
  if (current) ++current->errorsRaised;
  throw HostError(message);
}

void mexEndInterruptedCall() {
  if (std::this_thread::get_id() != current->thread) die("asked on a thread of the module's own");
  if (++current->checks == current->interruptedCheck) throw Interruption();
}

namespace host {

bool insideModule() { return moduleRuns && hostFunctions == 0; }

Outcome call(MexFunction* function, int nlhs, const std::vector<mxArray>& arguments,
             int interruptedCheck) {
  std::vector<const mxArray*> prhs(std::max<std::size_t>(arguments.size(), 1));
  std::transform(arguments.begin(), arguments.end(), prhs.begin(),
                 [](const mxArray& argument) { return &argument; });
  std::vector<mxArray*> plhs(static_cast<std::size_t>(std::max(nlhs, 1)));

  Call call;
  call.interruptedCheck = interruptedCheck;
  current = &call;
  Outcome outcome;
  try {
    const ModuleRun run;
    const auto start = std::chrono::steady_clock::now();
    function(nlhs, plhs.data(), static_cast<int>(arguments.size()), prhs.data());
    outcome.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  } catch (const HostError& error) {
    outcome.error = error.what();
  } catch (const Interruption&) {
    outcome.interrupted = true;
  } catch (...) {
    die("an exception that is not the host's own left the module");
  }
  if (!outcome.error && !outcome.interrupted)
    for (mxArray* result : plhs)
      if (result) outcome.results.push_back(std::move(*result));
  if (!call.texts.empty()) die("the module kept a text of the host's");
  if (call.errorsRaised != (outcome.error ? 1 : 0)) die("the module kept an error of the host's");
  outcome.errorsRaised = call.errorsRaised;
  outcome.printed = call.printed;
  outcome.checks = call.checks;
  current = nullptr;
  return outcome;
}

}  // namespace host
