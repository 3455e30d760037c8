#include "support/ReferenceField.h"

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "support/Bound.h"

namespace support {

double ReferenceField::tolerance(std::size_t i) const {
  const auto [x, y, z] = points[i];
  return support::tolerance(x, y, z, s / 2, l / 2, k);
}

double ReferenceField::doubleTolerance(std::size_t i) const {
  return std::ldexp(tolerance(i), 24 - 53);
}

std::vector<ReferenceField> readReferenceFields(const std::string& name) {
  std::istringstream file(contents(testFile("data/" + name)));
  std::vector<ReferenceField> fields;
  double l, s, k, x, y, z, re, im;
  while (file >> l >> s >> k >> x >> y >> z >> re >> im) {
    if (fields.empty() || fields.back().l != l || fields.back().s != s || fields.back().k != k)
      fields.push_back({l, s, k, {}, {}});
    fields.back().points.push_back({x, y, z});
    fields.back().pressure.emplace_back(re, im);
  }
  if (fields.empty()) throw std::runtime_error("no reference values in " + name);
  return fields;
}

std::string testFile(const std::string& path) {
  const char* const folder = std::getenv("PISTONFIELD_TESTS_DIR");
  return std::string(folder ? folder : PISTONFIELD_TESTS_DIR) + "/" + path;
}

std::string contents(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read " + path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace support
