#include "core/LoadedRules.h"

#include <thread>

namespace pistonfield {
namespace {

/// The thread that loaded the rule of each precision; none where there is no rule.
struct Loaders {
  std::thread::id single, dual;
} loaders;

std::thread::id& loader(Precision precision) {
  return precision == Precision::SINGLE ? loaders.single : loaders.dual;
}

}  // namespace

void noteRule(Precision precision) { loader(precision) = std::this_thread::get_id(); }

bool hasOwnRule(Precision precision) { return loader(precision) == std::this_thread::get_id(); }

void forgetRules() { loaders = {}; }

}  // namespace pistonfield
