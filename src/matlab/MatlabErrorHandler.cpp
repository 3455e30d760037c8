#include "matlab/MatlabErrorHandler.h"

#include <mex.h>

#include <sstream>
#include <string>

#include "core/ErrorReport.h"

namespace pistonfield {

void MatlabErrorHandler::fail(const char* condition, int line, const char* file) {
  std::ostringstream report;
  report.exceptions(std::ios::badbit);  // or it would drop the rest when memory runs out
  writeErrorReport(report, condition, line, file);
  const std::string text = report.str();
  mexErrMsgTxt(text.c_str());  // unwinds this function, and releases the text
}

}  // namespace pistonfield
