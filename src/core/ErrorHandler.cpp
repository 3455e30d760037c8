#include "core/ErrorHandler.h"

#include <cstdlib>
#include <iostream>

#include "core/ErrorReport.h"

namespace pistonfield {

ErrorHandler* ErrorHandler::theErrorHandler = nullptr;
DefaultErrorHandler DefaultErrorHandler::theDefaultErrorHandler;

ErrorHandler::~ErrorHandler() = default;

ErrorHandler* ErrorHandler::getErrorHandler() {
  return theErrorHandler ? theErrorHandler : &DefaultErrorHandler::theDefaultErrorHandler;
}

void ErrorHandler::setErrorHandler(ErrorHandler* handler) {
  delete theErrorHandler;
  theErrorHandler = nullptr;  // no dangling pointer, should the next allocation fail
  theErrorHandler = handler ? handler : new DefaultErrorHandler;
}

void DefaultErrorHandler::fail(const char* condition, int line, const char* file) {
  writeErrorReport(std::cerr, condition, line, file);
  std::abort();
}

void fail(const char* condition, SourceLocation location) {
  ErrorHandler::getErrorHandler()->fail(condition, location.line, location.file);
}

}  // namespace pistonfield
