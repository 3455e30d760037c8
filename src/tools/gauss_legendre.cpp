#include <cstdlib>
#include <iostream>
#include <string>

#include <pistonfield/FastNearfield/GaussLegendreExport.h>

// gauss_legendre ORDER [OUTPUT]: a Gauss–Legendre rule as source text or in files.
int main(int argc, char* argv[]) {
  char* end = nullptr;
  const long order = argc > 1 ? std::strtol(argv[1], &end, 10) : 0;
  const bool isOrder = end && end != argv[1] && *end == '\0' && 1 <= order && order <= 16383;
  if (!isOrder || argc > 3) {
    std::cerr << "usage: gauss_legendre ORDER [OUTPUT]\n"
                 "  ORDER   1 ... 16383\n"
                 "  OUTPUT  C++ (the default), F77, F90 or MAT, or the root of three file names\n";
    return 2;
  }
  const bool whole = pistonfield::exportRule(static_cast<int>(order), argc > 2 ? argv[2] : "C++");
  if (whole && std::cout.flush()) return 0;
  std::cerr << "gauss_legendre: the rule could not be written whole\n";
  return 1;
}
