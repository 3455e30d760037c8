#pragma once

#include <iostream>
#include <locale>
#include <string>

namespace support {

/// During its lifetime, the global locale and standard output format numbers as "1.234,5".
class CommaLocale {
 public:
  ~CommaLocale() {
    std::cout.imbue(ofOutput_);
    std::locale::global(global_);
  }
  CommaLocale() = default;
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

 private:
  struct Punctuation : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };

  const std::locale commas_{std::locale::classic(), new Punctuation};
  const std::locale global_ = std::locale::global(commas_);
  const std::locale ofOutput_ = std::cout.imbue(commas_);
};

}  // namespace support
