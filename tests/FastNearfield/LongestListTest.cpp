#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <vector>

#include "FastNearfield/Launchers.h"
#include "support/SameBits.h"

// The longest list that a launcher accepts: 2³¹ − 1 points, which take 26 GB, with 17 GB of
// pressures. Each array maps the same piece of memory again and again, and only some pieces of the
// pressures have memory of their own, so that a few hundred megabytes suffice.

#if defined(__linux__)

using launchers::a;
using launchers::b;
using launchers::Complex;
using launchers::k;

namespace {

/// An array of many pieces that share the same memory.
template <class T>
class Repeated {
 public:
  Repeated(std::size_t pieceSize, std::size_t pieces)
      : pieceSize_(pieceSize),
        bytes_(pieceSize * pieces * sizeof(T)),
        file_(memfd_create("repeated", 0)),
        begin_(static_cast<T*>(
            mmap(nullptr, bytes_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))) {
    if (file_ < 0 || begin_ == MAP_FAILED ||
        ftruncate(file_, static_cast<off_t>(pieceBytes())) != 0)
      throw std::bad_alloc();
    for (std::size_t n = 0; n < pieces; ++n) place(n, MAP_SHARED, file_);
  }
  Repeated(const Repeated&) = delete;
  Repeated& operator=(const Repeated&) = delete;
  ~Repeated() {
    munmap(begin_, bytes_);
    close(file_);
  }

  /// Gives piece n memory of its own, filled with zeros.
  void makeOwn(std::size_t n) { place(n, MAP_PRIVATE | MAP_ANONYMOUS, -1); }

  T* begin() const { return begin_; }
  T* piece(std::size_t n) const { return begin_ + n * pieceSize_; }

 private:
  std::size_t pieceBytes() const { return pieceSize_ * sizeof(T); }

  void place(std::size_t n, int flags, int file) {
    if (mmap(piece(n), pieceBytes(), PROT_READ | PROT_WRITE, flags | MAP_FIXED, file, 0) ==
        MAP_FAILED)
      throw std::bad_alloc();
  }

  const std::size_t pieceSize_, bytes_;
  const int file_;
  T* const begin_;
};

enum class Launch { WHOLE, IN_PIECES };

class LongestListTest : public launchers::Test, public testing::WithParamInterface<Launch> {};

INSTANTIATE_TEST_SUITE_P(, LongestListTest, testing::Values(Launch::WHOLE, Launch::IN_PIECES),
                         [](const auto& launch) {
                           return launch.param == Launch::WHOLE ? "Whole" : "InPieces";
                         });

TEST_P(LongestListTest, EveryPieceOfItIsEvaluated) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "would take many minutes, and its memory is mapped, not the sanitizer's";
#endif
  if (!std::getenv("PISTONFIELD_LONG"))
    GTEST_SKIP() << "takes half a minute and more: runs where PISTONFIELD_LONG is set";
  constexpr std::size_t piece = std::size_t{1} << 20, pieces = std::size_t{1} << 11;
  constexpr int most = std::numeric_limits<int>::max();
  static_assert(piece * pieces == std::size_t{most} + 1);
  setCudaIntegratorParameters("RectangularPiston", 1);

  const Repeated<float> positions(3 * piece, pieces);
  for (std::size_t n = 0; n < piece; ++n) {
    float* const position = positions.begin() + 3 * n;
    const std::size_t column = n % 1024, row = n / 1024;
    position[0] = static_cast<float>(column) * 0x1p-8f;
    position[1] = static_cast<float>(row) * 0x1p-8f;
    position[2] = 1;
  }
  std::vector<Complex> expected(piece);
  RectangularPiston_func_unstructured(expected.data(), int{piece}, positions.begin(), a, b, k);

  Repeated<Complex> pressures(piece, pieces);
  // Pieces next to 2³⁰ points and, in both arrays, next to 2³¹ and 2³² bytes and floats.
  const std::size_t own[] = {0,   1,   170,  171,  256,  341,  342,       512,
                             682, 683, 1023, 1024, 1365, 1366, pieces - 1};
  for (const std::size_t n : own) pressures.makeOwn(n);
  Complex* const last = pressures.piece(pieces) - 1;  // beyond the last point
  *last = {-7, -7};
  if (GetParam() == Launch::WHOLE) {
    RectangularPiston_func_unstructured_device(pressures.begin(), most, positions.begin(), a, b, k);
  } else {
    startAfresh(Memory::HOSTS);
    setCudaIntegratorParameters("RectangularPiston", 1);
    RectangularPiston_func_unstructured(pressures.begin(), most, positions.begin(), a, b, k);
  }

  EXPECT_TRUE(support::sameBits(*last, {-7, -7}));
  *last = expected.back();
  for (const std::size_t n : own) {
    const Complex* const values = pressures.piece(n);
    EXPECT_TRUE(support::sameBits({values, values + piece}, expected)) << n;
  }
  const Complex* const shared = pressures.piece(2);
  EXPECT_TRUE(support::sameBits({shared, shared + piece}, expected));
}

}  // namespace

#endif
