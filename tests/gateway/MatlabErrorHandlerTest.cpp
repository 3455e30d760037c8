#include "matlab/MatlabErrorHandler.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "core/Vector.h"

namespace {

TEST(MatlabErrorHandlerTest, AFailedIndexCheckIsTheHostsErrorMessage) {
  pistonfield::ErrorHandler::setErrorHandler(new pistonfield::MatlabErrorHandler);
  pistonfield::MVector<double, 3> v;
  volatile int component = 3;
  std::string message;
  try {
    v[component] = 1;
  } catch (const std::exception& hostError) {
    message = hostError.what();
  }
  EXPECT_EQ(message,
            "ERROR: assertion failure in src/core/Vector at line 48\n"
            "       condition failed: (i<N).\n\n");
}

}  // namespace
