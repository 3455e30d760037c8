#include "core/DeviceLock.h"

#include <mutex>

namespace pistonfield {
namespace {

std::recursive_mutex& deviceMutex() {
  static std::recursive_mutex mutex;
  return mutex;
}

}  // namespace

DeviceLock::DeviceLock() { deviceMutex().lock(); }

DeviceLock::~DeviceLock() { deviceMutex().unlock(); }

}  // namespace pistonfield
