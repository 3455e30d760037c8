#include "host/MexHost.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <iostream>
#include <stdexcept>

namespace host {

MexHost::MexHost(const std::string& path) : module_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (!module_) throw std::runtime_error(dlerror());
}

MexHost::~MexHost() { dlclose(module_); }

void* MexHost::symbol(const char* name) const { return dlsym(module_, name); }

Outcome MexHost::call(int nlhs, const std::vector<mxArray>& arguments, int interruptedCheck) const {
  const auto function = reinterpret_cast<MexFunction*>(symbol("mexFunction"));
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  Outcome outcome = host::call(function, nlhs, arguments, interruptedCheck);
  std::cout.flush();
  outcome.standardError = testing::internal::GetCapturedStderr();
  outcome.standardOutput = testing::internal::GetCapturedStdout();
  return outcome;
}

}  // namespace host
