#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include "host/MexArray.h"

// Values of the host's language out of a fuzzer's bytes.

namespace fuzz {

/// Of any class, size and content.
mxArray anyArray(FuzzedDataProvider& bytes);

/// Makes it another one that is nearly the same.
void spoil(FuzzedDataProvider& bytes, mxArray& array);

/// What an argument should be; what it holds may be anything.
mxArray points(FuzzedDataProvider& bytes);
mxArray number(FuzzedDataProvider& bytes);
mxArray mode(FuzzedDataProvider& bytes);
mxArray orderOrTable(FuzzedDataProvider& bytes);

}  // namespace fuzz
