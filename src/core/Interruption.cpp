#include "core/Interruption.h"

namespace pistonfield {
namespace {

InterruptionCheck theCheck = nullptr;

}  // namespace

void setInterruptionCheck(InterruptionCheck check) { theCheck = check; }

void checkInterruption() {
  if (theCheck != nullptr) theCheck();
}

}  // namespace pistonfield
