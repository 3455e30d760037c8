#include "FastNearfield/GaussLegendreExport.h"

#include <cstddef>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <memory>

#include "FastNearfield/GaussLegendre.h"

namespace pistonfield {
namespace {

constexpr int digits = 16;

/// How a language writes comments and assignments to array elements.
struct Syntax {
  const char* names[2];
  const char* comment;
  const char* indent;
  const char* open;
  const char* close;
  const char* end;
  int firstIndex;
};

constexpr Syntax syntaxes[] = {{{"C++", "c++"}, "//", "  ", "[", "] = ", ";\n", 0},
                               {{"F77", "f77"}, "c", "      ", "(", ") = ", "\n", 1},
                               {{"F90", "f90"}, "!", "  ", "(", ") = ", "\n", 1},
                               {{"MAT", "mat"}, "%", "  ", "(", ") = ", ";\n", 1}};

const Syntax* findSyntax(const std::string& output) {
  for (const Syntax& syntax : syntaxes)
    if (output == syntax.names[0] || output == syntax.names[1]) return &syntax;
  return nullptr;
}

void printHeader(const char* comment, int order) {
  std::cout << comment << "\n"
            << comment << "  Weights W, abscissas X and range R\n"
            << comment << "  for a Gauss-Legendre quadrature rule\n"
            << comment << "  ORDER = " << order << "\n"
            << comment << "\n"
            << comment << "  Standard rule:\n"
            << comment << "    Integral ( -1 <= x <= +1 ) f(x) dx\n"
            << comment << "    is to be approximated by\n"
            << comment << "    sum ( 1 <= I <= ORDER ) w(i) * f(x(i)).\n"
            << comment << "\n";
}

void printAssignments(const Syntax& syntax, char name, const double* values, int count) {
  for (int i = 0; i < count; ++i)
    std::cout << syntax.indent << name << syntax.open << i + syntax.firstIndex << syntax.close
              << values[i] << syntax.end;
}

void printName(const char* label, const std::string& name) {
  std::cout << label << "\"" << name << "\".\n";
}

}  // namespace

void legendre_handle(int order, std::string output) {
  double R[] = {-1.0, 1.0};
  const auto size = static_cast<std::size_t>(order);  // of a negative one: more than can be had
  const std::unique_ptr<double[]> W(new double[size]);
  const std::unique_ptr<double[]> X(new double[size]);
  legendre_compute(order, X.get(), W.get());

  if (const Syntax* const syntax = findSyntax(output)) {
    printHeader(syntax->comment, order);
    std::cout << std::setprecision(digits);
    printAssignments(*syntax, 'w', W.get(), order);
    std::cout << "\n";
    printAssignments(*syntax, 'x', X.get(), order);
    std::cout << "\n";
    printAssignments(*syntax, 'r', R, 2);
    return;
  }

  const std::string weights = output + "_w.txt";
  const std::string abscissas = output + "_x.txt";
  const std::string region = output + "_r.txt";
  std::cout << "\n"
            << "  Creating quadrature files.\n"
            << "\n";
  printName("  Root file name is     ", output);
  std::cout << "\n";
  printName("  Weight file will be   ", weights);
  printName("  Abscissa file will be ", abscissas);
  printName("  Region file will be   ", region);
  dtable_write0(weights, 1, order, W.get());
  dtable_write0(abscissas, 1, order, X.get());
  dtable_write0(region, 1, 2, R);
}

void dtable_write0(std::string outputFileName, int m, int n, double* table) {
  std::ofstream file(outputFileName);
  if (!file) {
    std::cerr << "\n"
              << "DTABLE_WRITE0 - Fatal error!\n"
              << "  Could not open the output file.\n";
    return;
  }
  file << std::setprecision(digits);
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i < m; ++i) file << std::setw(24) << *table++ << "  ";
    file << "\n";
  }
}

void timestamp() {
  static char time_buffer[40];
  const std::time_t now = std::time(nullptr);
  std::strftime(time_buffer, sizeof time_buffer, "%d %B %Y %I:%M:%S %p", std::localtime(&now));
  std::cout << time_buffer << "\n";
}

}  // namespace pistonfield
