#pragma once

namespace pistonfield {

/// Sine and cosine without a branch, which a compiler can vectorize. They have the same bits on
/// every machine. For arguments of at most 2²⁸ in magnitude their error is at most 0.85·2⁻⁵³, and
/// 0.502·2⁻²⁴ for T = float. For arguments above 2²⁸·π/2 neither is finite.
///
/// `Set` ties the code to the instruction set of the file that includes this.
template <class Set, class T>
struct SineCosine {
  T sine, cosine;

  explicit SineCosine(T argument) {
    // x = n·π/2 + r. Adding 1.5·2⁵² rounds a number to an integer and leaves its last bits in the
    // last bits of the sum. The parts of π/2 have 25 bits, so that their products with n are exact.
    // The product of a larger n with the first part overflows, so that no result is finite.
    const double x = argument;
    const double shift = 0x1.8p52;
    const double shifted = x * 0x1.45f306dc9c883p-1 + shift;
    const double n = shifted - shift;
    const double exact = x - n * 0x1p996 * 0x1.921fb5p-996;

    // For |r| ≤ π/4: polynomials in z = r², with terms added in pairs for speed.
    double s, c;
    if constexpr (sizeof(T) == sizeof(float)) {
      const double r = exact - n * 0x1.110b4611a6263p-26;
      const double z = r * r;
      const double zz = z * z;
      const double s3 = 0x1.6c82f5056e21ep-19 * z - 0x1.a00deb1286cc5p-13;
      const double s1 = 0x1.111105e4f7faap-7 * z - 0x1.555555478f346p-3;
      const double c3 = 0x1.99f72e5b32618p-16 * z - 0x1.6c0c5efec044dp-10;
      const double c1 = 0x1.55554a5d7170ap-5 * z - 0.5;
      s = r + r * z * (s3 * zz + s1);
      c = 1.0 + z * (c3 * zz + c1);
    } else {
      // r + rest has more digits than r alone, and high + low more than 1 − z/2.
      const double more = exact - n * 0x1.110b46p-26;
      const double last = n * 0x1.1a62633145c07p-54;
      const double r = more - last;
      const double rest = (more - r) - last;
      const double z = r * r;
      const double zz = z * z;
      const double s5 = 0x1.5d60ef77616d9p-33 * z - 0x1.ae5da4f51c8f7p-26;
      const double s3 = 0x1.71de345d80744p-19 * z - 0x1.a01a019a91e7cp-13;
      const double s1 = 0x1.111111110e9a6p-7 * z - 0x1.555555555553cp-3;
      const double c6 = -0x1.8fa9a72a7e7adp-37 * z + 0x1.1ee9e17e4c04dp-29;
      const double c4 = -0x1.27e4f7f911cacp-22 * z + 0x1.a01a019c97a12p-16;
      const double c2 = -0x1.6c16c16c1504cp-10 * z + 0x1.555555555554bp-5;
      const double half = 0.5 * z;
      const double high = 1.0 - half;
      const double low = (1.0 - high) - half;
      s = r + (r * z * ((s5 * zz + s3) * zz + s1) + rest * high);
      c = high + (low + (zz * ((c6 * zz + c4) * zz + c2) - r * rest));
    }

    // Quarter turns: an odd number swaps sine and cosine. The second and third negate the sine, the
    // first and second the cosine.
    const Bits quarters = bits(shifted);
    const Bits swap = (bits(s) ^ bits(c)) & (0 - (quarters & 1));
    sine = static_cast<T>(number(bits(s) ^ swap ^ (quarters & 2) << 62));
    cosine = static_cast<T>(number(bits(c) ^ swap ^ ((quarters + 1) & 2) << 62));
  }

 private:
  using Bits = unsigned long long;

  static Bits bits(double x) {
    Bits b;
    __builtin_memcpy(&b, &x, sizeof b);
    return b;
  }
  static double number(Bits b) {
    double x;
    __builtin_memcpy(&x, &b, sizeof x);
    return x;
  }
};

}  // namespace pistonfield
