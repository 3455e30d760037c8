#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include "host/MexArray.h"

// Makes values of the host's language from a fuzzer's bytes.

namespace fuzz {

/// An array of any class, size and content.
mxArray anyArray(FuzzedDataProvider& bytes);

/// Changes the array slightly.
void spoil(FuzzedDataProvider& bytes, mxArray& array);

/// A valid type of array for each argument, with any values.
mxArray points(FuzzedDataProvider& bytes);
mxArray number(FuzzedDataProvider& bytes);
mxArray mode(FuzzedDataProvider& bytes);
mxArray orderOrTable(FuzzedDataProvider& bytes);

}  // namespace fuzz
