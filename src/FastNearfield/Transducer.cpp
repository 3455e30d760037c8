#include "FastNearfield/Transducer.h"

#include "core/ErrorHandler.h"

namespace pistonfield {
namespace {
// A fixed line number: it is part of a message that users know.
constexpr SourceLocation typeCheck{"src/FastNearfield/Transducer", 14};
}  // namespace

void Transducer::compute(CudaStorage* data, const Grid3DR<double>& grid) const {
  if (data->getType() != CudaStorage::DT_FLOAT) {
    fail("data->getType() == CudaStorage::DT_FLOAT", typeCheck);
    return;  // there are no floats to write to
  }
  compute(data->getFloatData(), grid);
}

}  // namespace pistonfield
