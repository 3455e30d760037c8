#include "core/ErrorHandler.h"

#include <cstdlib>
#include <iostream>

#include "core/ErrorReport.h"

namespace pistonfield {

std::unique_ptr<ErrorHandler> ErrorHandler::theErrorHandler;
DefaultErrorHandler DefaultErrorHandler::theDefaultErrorHandler;

ErrorHandler::~ErrorHandler() = default;

ErrorHandler* ErrorHandler::getErrorHandler() {
  return theErrorHandler ? theErrorHandler.get() : &DefaultErrorHandler::theDefaultErrorHandler;
}

void ErrorHandler::setErrorHandler(ErrorHandler* handler) {
  theErrorHandler.reset();
  theErrorHandler.reset(handler ? handler : new DefaultErrorHandler);
}

void DefaultErrorHandler::fail(const char* condition, int line, const char* file) {
  writeErrorReport(std::cerr, condition, line, file);
  std::abort();
}

void fail(const char* condition, SourceLocation location) {
  ErrorHandler::getErrorHandler()->fail(condition, location.line, location.file);
}

}  // namespace pistonfield
