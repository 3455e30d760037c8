#include "matlab/MatlabErrorHandler.h"

#include <mex.h>

#include <sstream>
#include <string>

#include "core/ErrorReport.h"

namespace pistonfield {

void MatlabErrorHandler::fail(const char* condition, int line, const char* file) {
  std::ostringstream report;
  report.exceptions(std::ios::badbit);  // without this, running out of memory would truncate it
  writeErrorReport(report, condition, line, file);
  const std::string text = report.str();
  mexErrMsgTxt(text.c_str());  // unwinds this function and so frees the text
}

}  // namespace pistonfield
