#include "core/RuleOwner.h"

#include <thread>

namespace pistonfield {
namespace {

/// The thread that loaded the rule of each precision, or none if there is no rule.
struct Loaders {
  std::thread::id ofSingle, ofDouble;
} loaders;

std::thread::id& loader(Precision precision) {
  return precision == Precision::SINGLE ? loaders.ofSingle : loaders.ofDouble;
}

}  // namespace

void forgetRule(Precision precision) { loader(precision) = {}; }

void noteRule(Precision precision) { loader(precision) = std::this_thread::get_id(); }

bool hasOwnRule(Precision precision) { return loader(precision) == std::this_thread::get_id(); }

void forgetRules() { loaders = {}; }

}  // namespace pistonfield
