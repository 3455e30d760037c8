#include "FastNearfield/GaussLegendreExport.h"

#include <cstddef>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <locale>
#include <memory>

#include "FastNearfield/GaussLegendre.h"

namespace pistonfield {
namespace {

constexpr int digits = 16;

/// Makes a stream write numbers in the C locale for the length of a scope. The program's locale may
/// have decimal commas and separators.
class ClassicNumbers {
 public:
  explicit ClassicNumbers(std::ostream& out)
      : out_(out), before_(out.imbue(std::locale::classic())) {}
  ~ClassicNumbers() { out_.imbue(before_); }
  ClassicNumbers(const ClassicNumbers&) = delete;
  ClassicNumbers& operator=(const ClassicNumbers&) = delete;

 private:
  std::ostream& out_;
  const std::locale before_;
};

/// The syntax of comments and of assignments to array elements.
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

/// Returns whether the file was written completely.
bool writeTable(const std::string& name, int m, int n, const double* table) {
  std::ofstream file(name);
  if (!file) {
    std::cerr << "\n"
              << "DTABLE_WRITE0 - Fatal error!\n"
              << "  Could not open the output file.\n";
    return false;
  }
  const ClassicNumbers classic(file);
  file << std::setprecision(digits);
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i < m; ++i) file << std::setw(24) << *table++ << "  ";
    file << "\n";
  }
  file.close();
  return file.good();
}

void printName(const char* label, const std::string& name) {
  std::cout << label << "\"" << name << "\".\n";
}

}  // namespace

void legendre_handle(int order, std::string output) { exportRule(order, output); }

bool exportRule(int order, const std::string& output) {
  double R[] = {-1.0, 1.0};
  const auto size = static_cast<std::size_t>(order);  // if negative, too much to allocate
  const std::unique_ptr<double[]> W(new double[size]);
  const std::unique_ptr<double[]> X(new double[size]);
  legendre_compute(order, X.get(), W.get());

  if (const Syntax* const syntax = findSyntax(output)) {
    const ClassicNumbers classic(std::cout);
    printHeader(syntax->comment, order);
    std::cout << std::setprecision(digits);
    printAssignments(*syntax, 'w', W.get(), order);
    std::cout << "\n";
    printAssignments(*syntax, 'x', X.get(), order);
    std::cout << "\n";
    printAssignments(*syntax, 'r', R, 2);
    return true;
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
  bool whole = writeTable(weights, 1, order, W.get());
  whole = writeTable(abscissas, 1, order, X.get()) && whole;
  return writeTable(region, 1, 2, R) && whole;
}

void dtable_write0(std::string outputFileName, int m, int n, double* table) {
  writeTable(outputFileName, m, n, table);
}

void timestamp() {
  static char time_buffer[40];
  const std::time_t now = std::time(nullptr);
  std::strftime(time_buffer, sizeof time_buffer, "%d %B %Y %I:%M:%S %p", std::localtime(&now));
  std::cout << time_buffer << "\n";
}

}  // namespace pistonfield
