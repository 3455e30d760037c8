#include "matlab/Arguments.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>

#include "core/Progress.h"

namespace pistonfield {
namespace {

constexpr std::size_t mostInt = std::numeric_limits<int>::max();

/// Whether mxGetScalar can read a number from the array on every host. From a sparse array,
/// mxGetScalar reads the first nonzero element, or 0.
bool hasScalar(const mxArray* array) {
  return (mxIsNumeric(array) || mxIsLogical(array) || mxIsChar(array)) && mxGetM(array) > 0 &&
         mxGetN(array) > 0;
}

/// Truncates toward zero. NaN and values out of range become the most negative int.
int toInt(double value) {
  constexpr double limit = 2147483648.0;
  return value > -limit - 1 && value < limit ? static_cast<int>(value)
                                             : std::numeric_limits<int>::min();
}

struct FreeText {
  void operator()(char* text) const { mxFree(text); }
};

/// The characters column by column up to a NUL, or "" if the array holds no characters.
std::string textOf(const mxArray* array) {
  // Freed here, because not every host frees what mxArrayToString returns.
  const std::unique_ptr<char, FreeText> text(mxIsChar(array) ? mxArrayToString(array) : nullptr);
  return text ? text.get() : "";
}

}  // namespace

void checkCounts(int nlhs, int nrhs) {
  if (nrhs < 5 || nrhs > 7)
    mexErrMsgTxt(
        "Must have five or six input arguments: ([list of points], ignored, l, s, k, "
        "['cuda'|'cudadp'|'cpu'|'cpusp'|'cpudp'], [nabscissas])");
  if (nlhs != 1) mexErrMsgTxt("Must have one output arguments");
}

void checkPointsType(const mxArray* points) {
  // Current hosts have no class "sparse". Classes other than double have another layout.
  if (mxIsComplex(points) || mxIsClass(points, "sparse") || mxIsSparse(points) ||
      mxIsChar(points) || !mxIsDouble(points))
    mexErrMsgTxt("Input must be real, full, and nonstring");
}

Quadrature readQuadrature(int nrhs, const mxArray* const* prhs) {
  Quadrature quadrature{10, false, nullptr};
  if (nrhs <= NABSCISSAS) return quadrature;
  const mxArray* const argument = prhs[NABSCISSAS];
  if (mxGetN(argument) == 2 && mxIsDouble(argument) && !mxIsSparse(argument)) {
    const std::size_t rows = mxGetM(argument);
    progress() << "using " << rows << " abscissas." << std::endl;
    quadrature = {static_cast<int>(std::min(rows, mostInt)), true, mxGetPr(argument)};
  } else if (mxGetN(argument) == 1 && mxGetM(argument) == 1 && hasScalar(argument)) {
    quadrature.nabs = toInt(mxGetScalar(argument));
  } else {
    mexErrMsgTxt("abscissas must be a number or a 2D matrix containing abscissas and weights.");
  }
  return quadrature;
}

double readScalar(const mxArray* const* prhs, Argument argument) {
  if (!hasScalar(prhs[argument])) {
    const char* const names[] = {"points", "ignored", "l", "s", "k"};
    const std::string message = std::string(names[argument]) + " (argument " +
                                std::to_string(argument + 1) + ") must be a number.";
    mexErrMsgTxt(message.c_str());
  }
  return mxGetScalar(prhs[argument]);
}

unsigned countPoints(const mxArray* points) {
  if (mxGetM(points) != 3) mexErrMsgTxt("Points (argument 1) must have dimension of three.");
  const std::size_t count = mxGetN(points);
  if (count > mostInt) mexErrMsgTxt("Points (argument 1) must have at most 2147483647 columns.");
  return static_cast<unsigned>(count);
}

bool selectsDevice(int nrhs, const mxArray* const* prhs) {
  if (nrhs <= MODE) return true;
  if (!mxIsChar(prhs[MODE]))
    mexErrMsgTxt("Input 5 must be a character string and either be 'cuda' or 'cpu'");
  const std::string mode = textOf(prhs[MODE]);
  if (mode == "cuda" || mode == "cudadp") return true;
  if (mode != "cpu" && mode != "cpusp" && mode != "cpudp")
    mexErrMsgTxt("Input 5 must either be 'cuda' or 'cpu[sp,dp]'");
  return false;
}

bool isText(const mxArray* array, const char* text) { return textOf(array) == text; }

}  // namespace pistonfield
