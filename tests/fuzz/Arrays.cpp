#include "fuzz/Arrays.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/Numbers.h"

namespace fuzz {
namespace {

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
  array.re = numbers<double>(bytes, count);
  if (array.isComplex) array.im = numbers<double>(bytes, count);
}

/// An array with more columns than an int can count.
mxArray huge(FuzzedDataProvider& bytes) {
  mxArray array;
  array.dims = {
      bytes.ConsumeIntegralInRange<std::size_t>(3, 4),
      bytes.ConsumeIntegralInRange<std::size_t>(std::size_t{1} << 31, std::size_t{1} << 60)};
  return array;
}

}  // namespace

mxArray anyArray(FuzzedDataProvider& bytes) {
  mxArray array;
  array.className = anyClass(bytes);
  array.dims = anyDims(bytes);
  array.isComplex = bytes.ConsumeBool();
  array.isSparse = bytes.ConsumeBool() && canBeSparse(array);
  fill(bytes, array);
  return array;
}

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

mxArray points(FuzzedDataProvider& bytes) {
  if (bytes.ConsumeIntegralInRange(0, 63) == 63) return huge(bytes);
  mxArray array;
  array.dims = {3, bytes.ConsumeIntegralInRange<std::size_t>(0, 64)};
  if (bytes.ConsumeBool()) array.dims = {3, array.dims[1] / 4, 4};
  fill(bytes, array);
  return array;
}

mxArray number(FuzzedDataProvider& bytes) {
  return host::scalar(bytes.ConsumeBool() ? usualNumber<double>(bytes) : anyNumber<double>(bytes));
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

}  // namespace fuzz
