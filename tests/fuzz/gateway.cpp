#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "emulation/TestControl.h"
#include "fuzz/Numbers.h"
#include "fuzz/Property.h"
#include "gateway/Messages.h"
#include "host/MexCall.h"

// Calls [results{1:nlhs}] = pistonfield(arguments{:}) with any arguments. A call with valid
// arguments returns as many pressures as points, any other call raises one of the documented
// messages, and neither leaks anything. The host ensures that there is exactly one message.

namespace {

using Arguments = std::vector<mxArray>;

std::size_t elements(const mxArray& array) {
  std::size_t count = 1;
  for (const std::size_t size : array.dims) count *= size;
  return count;
}

const char* anyClass(FuzzedDataProvider& bytes) {
  static const char* const classes[] = {
      "double", "single", "int8",    "uint8", "int16", "uint16", "int32",           "uint32",
      "int64",  "uint64", "logical", "char",  "cell",  "struct", "function_handle", "object"};
  return bytes.PickValueInArray(classes);
}

bool canBeSparse(const mxArray& array) {
  return array.className == "double" || array.className == "logical";
}

std::vector<std::size_t> anyDims(FuzzedDataProvider& bytes) {
  std::vector<std::size_t> dims(bytes.ConsumeIntegralInRange<std::size_t>(2, 4));
  for (std::size_t& size : dims)
    size = bytes.ConsumeIntegralInRange<std::size_t>(0, dims.size() > 2 ? 4 : 9);
  return dims;
}

/// Any order, often one at the ends of the valid range.
int anyOrder(FuzzedDataProvider& bytes) {
  static const int edges[] = {-1, 0, 1, 2, 511, 512, 513, 514};
  switch (bytes.ConsumeIntegralInRange(0, 2)) {
    case 0:
      return bytes.PickValueInArray(edges);
    case 1:
      return bytes.ConsumeIntegralInRange(1, 8);
    default:
      return bytes.ConsumeIntegralInRange(-2, 520);
  }
}

/// Whether the array has more columns than an int can count. Such an array has no data, which
/// nothing may read.
bool isHuge(const mxArray& array) {
  return *std::max_element(array.dims.begin(), array.dims.end()) >= std::size_t{1} << 31;
}

/// Fills the array with elements of its class. A sparse matrix has fewer elements than its size.
void fill(FuzzedDataProvider& bytes, mxArray& array) {
  array.re.clear();
  array.im.clear();
  array.bytes.clear();
  if (isHuge(array)) return;
  std::size_t count = elements(array);
  if (array.isSparse) count = bytes.ConsumeIntegralInRange<std::size_t>(0, count);
  if (array.className != "double") {
    array.bytes = bytes.ConsumeBytes<char>(count);
    array.bytes.resize(count);
    return;
  }
  array.re = fuzz::numbers<double>(bytes, count);
  if (array.isComplex) array.im = fuzz::numbers<double>(bytes, count);
}

/// An array with more columns than an int can count.
mxArray huge(FuzzedDataProvider& bytes) {
  mxArray array;
  array.dims = {
      bytes.ConsumeIntegralInRange<std::size_t>(3, 4),
      bytes.ConsumeIntegralInRange<std::size_t>(std::size_t{1} << 31, std::size_t{1} << 60)};
  return array;
}

/// An array of any class, size and content.
mxArray anyArray(FuzzedDataProvider& bytes) {
  mxArray array;
  array.className = anyClass(bytes);
  array.dims = anyDims(bytes);
  array.isComplex = bytes.ConsumeBool();
  array.isSparse = bytes.ConsumeBool() && canBeSparse(array);
  fill(bytes, array);
  return array;
}

/// Changes the array slightly.
void spoil(FuzzedDataProvider& bytes, mxArray& array) {
  switch (bytes.ConsumeIntegralInRange(0, 4)) {
    case 0:
      array.className = anyClass(bytes);
      array.isSparse = array.isSparse && canBeSparse(array);
      break;
    case 1:
      array.isSparse = canBeSparse(array);
      break;
    case 2:
      array.isComplex = true;
      break;
    case 3:
      array.dims[bytes.ConsumeIntegralInRange<std::size_t>(0, array.dims.size() - 1)] =
          bytes.ConsumeIntegralInRange<std::size_t>(0, 4);
      break;
    default:
      std::swap(array.dims[0], array.dims[1]);
  }
  fill(bytes, array);
}

// A valid type of array for each argument, with any values.

mxArray points(FuzzedDataProvider& bytes) {
  if (bytes.ConsumeIntegralInRange(0, 63) == 63) return huge(bytes);
  mxArray array;
  array.dims = {3, bytes.ConsumeIntegralInRange<std::size_t>(0, 64)};
  if (bytes.ConsumeBool()) array.dims = {3, array.dims[1] / 4, 4};
  fill(bytes, array);
  return array;
}

mxArray number(FuzzedDataProvider& bytes) {
  return host::scalar(bytes.ConsumeBool() ? fuzz::usualNumber<double>(bytes)
                                          : fuzz::anyNumber<double>(bytes));
}

mxArray mode(FuzzedDataProvider& bytes) {
  static const char* const names[] = {"cuda", "cuda", "cuda", "cudadp", "cpu", "cpusp", "cpudp"};
  if (bytes.ConsumeIntegralInRange(0, 15) < 15) return host::text(bytes.PickValueInArray(names));
  mxArray text = host::text(bytes.ConsumeRandomLengthString(20));
  if (bytes.ConsumeBool() && text.dims[1] % 2 == 0) text.dims = {2, text.dims[1] / 2};
  return text;
}

mxArray orderOrTable(FuzzedDataProvider& bytes) {
  switch (bytes.ConsumeIntegralInRange(0, 3)) {
    case 0:
      return number(bytes);
    case 1:
      return host::scalar(anyOrder(bytes));
    case 2:
      return host::scalar(bytes.ConsumeIntegralInRange(1, 16));
    default:
      mxArray table;
      table.dims = {static_cast<std::size_t>(std::max(anyOrder(bytes), 0)), 2};
      fill(bytes, table);
      return table;
  }
}

host::Outcome call(int nlhs, const Arguments& arguments) {
  host::Outcome outcome = host::call(mexFunction, nlhs, arguments);
  fuzz::require(emulationTestControl()->liveAllocations() == 0, "no device memory stays behind");
  return outcome;
}

mxArray rightArgument(FuzzedDataProvider& bytes, std::size_t place) {
  switch (place) {
    case 0:
      return points(bytes);
    case 2:
    case 3:
    case 4:
      return number(bytes);
    case 5:
      return mode(bytes);
    case 6:
      return orderOrTable(bytes);
    default:
      return anyArray(bytes);
  }
}

/// Most likely a valid argument, otherwise a nearly valid one or anything.
mxArray argument(FuzzedDataProvider& bytes, std::size_t place) {
  const int choice = bytes.ConsumeIntegralInRange(0, 31);
  if (choice == 31) return anyArray(bytes);
  mxArray array = rightArgument(bytes, place);
  if (choice == 30) spoil(bytes, array);
  return array;
}

std::size_t argumentCount(FuzzedDataProvider& bytes) {
  const auto choice = bytes.ConsumeIntegralInRange<std::size_t>(0, 31);
  return choice < 10 ? choice : 5 + choice % 3;
}

int outputCount(FuzzedDataProvider& bytes) {
  const int choice = bytes.ConsumeIntegralInRange(0, 31);
  return choice < 4 ? choice : 1;
}

/// What the help requires of the arguments.
namespace right {

bool number(const mxArray& array) {
  return (mxIsNumeric(&array) || mxIsLogical(&array) || mxIsChar(&array)) && mxGetM(&array) > 0 &&
         mxGetN(&array) > 0;
}

bool fullDoubles(const mxArray& array) { return mxIsDouble(&array) && !array.isSparse; }

bool points(const mxArray& array) {
  const std::size_t columns = mxGetN(&array);
  return fullDoubles(array) && !array.isComplex && mxGetM(&array) == 3 && columns >= 1 &&
         columns < std::size_t{1} << 31;
}

/// Whether the characters up to a NUL are the expected text.
bool text(const mxArray& array, const std::string& expected) {
  const std::string all(array.bytes.begin(), array.bytes.end());
  return mxIsChar(&array) && all.substr(0, all.find('\0')) == expected;
}

bool mode(const mxArray& array) { return text(array, "cuda") || text(array, "cudadp"); }

bool orderOrTable(const mxArray& array) {
  const std::size_t rows = mxGetM(&array);
  if (mxGetN(&array) == 2) return fullDoubles(array) && rows >= 1 && rows <= 512;
  if (rows != 1 || mxGetN(&array) != 1 || !number(array)) return false;
  const double order = mxGetScalar(&array);
  return order >= 1 && order < 513;
}

bool arguments(int nlhs, const Arguments& given) {
  return nlhs == 1 && given.size() >= 5 && given.size() <= 7 && points(given[0]) &&
         number(given[2]) && number(given[3]) && number(given[4]) &&
         (given.size() < 6 || mode(given[5])) && (given.size() < 7 || orderOrTable(given[6]));
}

bool query(int nlhs, const Arguments& given) {
  return nlhs == 0 && given.size() == 1 && text(given[0], "info");
}

}  // namespace right

bool isKnown(const std::string& message) {
  for (const char* known : messages::all)
    if (message == known) return true;
  const auto endsWith = [&](const std::string& end) {
    return message.size() >= end.size() &&
           message.compare(message.size() - end.size(), end.size(), end) == 0;
  };
  return message.compare(0, 27, "ERROR: assertion failure in") == 0 &&
         (endsWith("condition failed: (order>0).\n\n") ||
          endsWith("condition failed: (N <= 512 && N>0).\n\n"));
}

void check(int nlhs, const Arguments& arguments) {
  const host::Outcome outcome = call(nlhs, arguments);
  if (right::query(nlhs, arguments)) {
    fuzz::require(!outcome.error && outcome.results.empty(), "a query returns nothing");
    return;
  }
  fuzz::require(right::arguments(nlhs, arguments) == !outcome.error,
                "good arguments give pressures, others an error; here " +
                    outcome.error.value_or("there was none"));
  if (outcome.error) {
    fuzz::require(isKnown(*outcome.error), "the message is known: " + *outcome.error);
    return;
  }
  const std::size_t count = mxGetN(&arguments[0]);
  fuzz::require(outcome.results.size() == 1, "there is one result");
  const mxArray& p = outcome.results[0];
  fuzz::require(p.className == "double" && p.isComplex &&
                    p.dims == std::vector<std::size_t>{count, 1} && p.re.size() == count &&
                    p.im.size() == count,
                "the result is one complex double a point");
}

/// Makes a call whose result must not depend on the calls before it.
void checkGoodCall() {
  static const Arguments good = {host::matrix(3, 2, {0, 0, 0.01, 0.001, -0.002, 0.02}),
                                 host::scalar(0), host::scalar(0.01), host::scalar(0.005),
                                 host::scalar(4188.79)};
  const auto values = [] {
    const host::Outcome outcome = call(1, good);
    fuzz::require(!outcome.error, "a good call succeeds");
    std::vector<double> parts = outcome.results.at(0).re;
    parts.insert(parts.end(), outcome.results[0].im.begin(), outcome.results[0].im.end());
    return parts;
  };
  static const std::vector<double> expected = values();
  const std::vector<double> actual = values();
  fuzz::require(std::memcmp(actual.data(), expected.data(), 4 * sizeof(double)) == 0,
                "a good call gives the same bits as ever");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  fuzz::silence();
  checkGoodCall();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider bytes(data, size);
  const int nlhs = outputCount(bytes);
  const bool thenGood = bytes.ConsumeIntegralInRange(0, 7) == 7;
  Arguments arguments(argumentCount(bytes));
  for (std::size_t place = 0; place < arguments.size(); ++place)
    arguments[place] = argument(bytes, place);
  if (arguments.size() == 1 && bytes.ConsumeBool()) arguments[0] = host::text("info");
  check(nlhs, arguments);
  if (thenGood) checkGoodCall();
  return 0;
}
