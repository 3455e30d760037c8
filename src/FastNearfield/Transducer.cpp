#include "FastNearfield/Transducer.h"

#include "core/ErrorHandler.h"

namespace pistonfield {
namespace {
// The line is the one that users know from the message.
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
