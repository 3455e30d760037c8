"""machine_test.py: checks that the machine that runs PTX follows the PTX manual: fma rounds once,
approximations are off by as much as allowed, and unknown instructions and invalid accesses are errors.

Exits with 77 without numpy."""

import unittest
from fractions import Fraction

from prerequisites import numpy_or_skip

numpy_or_skip()

import numpy as np

import arithmetic
from launch import BASE, Launches, Program, Shape
from memory import BadAccess, ConstantMemory, Memory
from ptx_text import UnknownPtx, read_module

F32, F64 = np.float32, np.float64


def nearest(exact, dtype):
    """A fraction rounded once."""
    digits, smallest = {F32: (24, -149), F64: (53, -1074)}[dtype]
    if exact == 0:
        return dtype(0)
    size = abs(exact)
    exponent = size.numerator.bit_length() - size.denominator.bit_length()
    if Fraction(2) ** exponent > size:
        exponent -= 1
    unit = Fraction(2) ** max(exponent - digits + 1, smallest)
    return dtype(float(round(exact / unit) * unit))  # round() rounds ties to even


class Fma(unittest.TestCase):
    def check(self, function, dtype, a, b, c):
        a, b, c = (np.array(values, dtype) for values in (a, b, c))
        with np.errstate(all="ignore"):
            result = function(a, b, c)
        for values in zip(a, b, c, result):
            x, y, z = (Fraction(float(v)) for v in values[:3])
            self.assertEqual(values[3], nearest(x * y + z, dtype), values)

    def sums_of_all_sizes(self, function, dtype, digits, spread):
        chance = np.random.default_rng(7)

        def numbers(most):
            whole = chance.integers(-(1 << digits) + 1, 1 << digits, 3000).astype(dtype)
            return np.ldexp(whole, chance.integers(-most, most, 3000) - digits).astype(dtype)

        a, b = numbers(spread), numbers(spread)
        product = a.astype(np.longdouble) * b
        self.check(function, dtype, a, b, numbers(min(3 * spread, 120)))
        # Close to cancellation, and close to the midpoint between two numbers.
        self.check(function, dtype, a, b, -(product.astype(dtype)))
        unit = np.spacing(np.abs(product).astype(dtype))
        half = np.ldexp(unit, -chance.integers(0, 2 * digits, 3000))
        self.check(function, dtype, a, b, half.astype(dtype))

    def test_of_floats_rounds_once(self):
        self.sums_of_all_sizes(arithmetic.fma32, F32, 24, 20)
        self.sums_of_all_sizes(arithmetic.fma32, F32, 3, 62)  # into the subnormal numbers

    def test_of_doubles_rounds_once(self):
        self.sums_of_all_sizes(arithmetic.fma64, F64, 53, 40)
        self.sums_of_all_sizes(arithmetic.fma64, F64, 53, 300)  # some of them as fractions

    def test_rounds_once_where_two_roundings_differ(self):
        # Slightly more than 1 + 2^-24: rounded to double, it is the midpoint between two floats.
        self.check(arithmetic.fma32, F32, [2.0**-24 + 2.0**-47], [1.0 - 2.0**-23], [1])
        self.check(arithmetic.fma32, F32, [2.0**-24] * 2, [1], [1, 1 + 2.0**-23])
        self.check(arithmetic.fma32, F32, [2.0**-40], [2.0**-40], [2.0**-24 * (1 + 2.0**-23)])

    def test_of_what_is_not_finite(self):
        for function, dtype in ((arithmetic.fma32, F32), (arithmetic.fma64, F64)):
            a, b, c = (np.array(v, dtype) for v in ([np.inf, np.inf, 0, np.nan, 1], [1, 0, np.inf, 1, 1],
                                                    [1, 1, 1, 1, -np.inf]))  # fmt: skip
            with np.errstate(all="ignore"):
                result = function(a, b, c)
            expected = np.array([np.inf, np.nan, np.nan, np.nan, -np.inf], dtype)
            np.testing.assert_array_equal(result, expected)


class Approximations(unittest.TestCase):
    def test_are_as_far_off_as_they_may_be(self):
        chance = np.random.default_rng(8)
        a = (1 + 3 * chance.random(20000)).astype(F32)
        root, reciprocal = np.sqrt(a.astype(F64)), 1 / a.astype(F64)
        for function, exact, most in (
            (arithmetic.sqrt_approx, root, root * 2.0**-23),
            (arithmetic.rcp_approx, reciprocal, np.spacing(reciprocal.astype(F32))),
        ):
            for way, beyond in ((-1, -np.inf), (1, np.inf)):
                value = function(a, np.full(a.shape, way, np.int32))
                self.assertTrue((np.abs(value - exact) <= most).all())
                self.assertTrue((np.abs(np.nextafter(value, F32(beyond)) - exact) > most).all())
            unmoved = function(a, np.zeros(a.shape, np.int32))
            np.testing.assert_array_equal(unmoved, exact.astype(F32))

    def test_flush_subnormal_numbers(self):
        ways = np.zeros(3, np.int32)
        tiny, huge = F32(1e-39), F32(2.0**127)
        with np.errstate(all="ignore"):
            reciprocals = arithmetic.rcp_approx(np.array([tiny, -tiny, huge]), ways)
            roots = arithmetic.sqrt_approx(np.array([tiny, F32(4), F32(0)]), ways)
        self.assertEqual(reciprocals.tolist(), [np.inf, -np.inf, 0])
        self.assertEqual(roots.tolist(), [0, 2, 0])

    def test_of_what_has_no_neighbours_are_exact(self):
        for way in (-1, 0, 1):
            ways = np.full(4, way, np.int32)
            with np.errstate(all="ignore"):
                roots = arithmetic.sqrt_approx(np.array([np.inf, 0, -1, np.nan], F32), ways)
                reciprocals = arithmetic.rcp_approx(np.array([np.inf, 0, -np.inf, np.nan], F32), ways)
            np.testing.assert_array_equal(roots, np.array([np.inf, 0, np.nan, np.nan], F32))
            np.testing.assert_array_equal(reciprocals, np.array([0, np.inf, 0, np.nan], F32))


class Memories(unittest.TestCase):
    def test_global_memory_ends_with_its_last_word(self):
        memory = Memory(BASE, 1024)
        last = np.array([BASE + 4 * len(memory.words) - 4], np.uint64)
        memory.reader[-1] = 0
        memory.load(last, np.dtype(np.uint32), np.array([0]))
        with self.assertRaises(BadAccess):
            memory.load(last, np.dtype(np.uint64), np.array([0]))

    def test_of_a_constant_every_word_must_be_written(self):
        constants = ConstantMemory({"order": 8}, 1)
        address = np.array([constants.address["order"]], np.uint64)
        constants.write(0, "order", np.array([10], np.int32))
        constants.load(address, np.dtype(np.uint32), np.array([0]))
        with self.assertRaises(BadAccess):
            constants.load(address, np.dtype(np.uint64), np.array([0]))


KERNEL = """
.version 7.0
.target sm_50
.address_size 64
.visible .entry kernel(.param .u64 out, .param .u32 count) {
  .reg .pred %%p<3>; .reg .f32 %%f<9>; .reg .b32 %%r<9>; .reg .b64 %%rd<9>;
  mov.u32 %%r1, %%tid.x;
  ld.param.u32 %%r2, [count];
  ld.param.u64 %%rd1, [out];
  setp.ge.u32 %%p1, %%r1, %%r2;
  @%%p1 bra $end;
  mul.wide.u32 %%rd2, %%r1, 4;
  add.s64 %%rd3, %%rd1, %%rd2;
  %s
  st.global.u32 [%%rd3], %%r3;
$end:
  ret;
}
"""


class Programs(unittest.TestCase):
    def results(self, body, threads=4, is_off=False):
        module = read_module(KERNEL % body)
        memory = Memory(BASE, 4096)
        address = memory.room(4 * threads, 0)
        program = Program(module.kernels[0], {})
        shapes, arguments = [Shape((1, 1, 1), 32)], [[address, threads]]
        Launches(program, memory, ConstantMemory({}, 1), shapes, arguments, [is_off], seed=0).run()
        return memory.content(address, 4 * threads)[0].view(np.int32).tolist()

    def test_threads_go_their_own_ways_and_meet_again(self):
        loop = """mov.u32 %r3, 0; mov.u32 %r4, 0;
            $again: add.s32 %r3, %r3, %r4; add.s32 %r4, %r4, 1;
            setp.le.s32 %p2, %r4, %r1; @%p2 bra $again;
            @!%p2 add.s32 %r3, %r3, 100; @%p2 mov.u32 %r3, 7;"""
        self.assertEqual(self.results(loop), [100, 101, 103, 106])

    def test_integers(self):
        for body, expected in (
            ("sub.s32 %r4, %r1, 3; div.s32 %r3, %r4, 2;", [-1, -1, 0, 0]),
            ("sub.s32 %r4, %r1, 3; rem.s32 %r3, %r4, 2;", [-1, 0, -1, 0]),
            ("sub.s32 %r4, %r1, 3; shr.s32 %r3, %r4, 40;", [-1, -1, -1, 0]),
            ("shl.b32 %r3, 1, 32;", [0] * 4),
            ("shf.l.wrap.b32 %r3, -1, %r1, 33;", [1, 3, 5, 7]),
            ("mov.u64 %rd4, 5; mov.u64 %rd5, -1; bfi.b64 %rd6, %rd4, %rd5, 4, 8; cvt.u32.u64 %r3, %rd6;",
             [-4096 + 0x5F] * 4),
            ("mov.b32 %r4, 1000; bfe.u32 %r3, %r4, %r1, 4;", [1000 >> n & 15 for n in range(4)]),
            ("mov.b32 %r3, 0f3F800000;", [0x3F800000] * 4),
            ("setp.lt.u32 %p2, %r1, 3; selp.b32 %r3, 0f3F800000, 0f40000000, %p2;",
             [0x3F800000] * 3 + [0x40000000]),
            ("mov.f32 %f1, 0f3F800000; setp.eq.b32 %p2, %f1, 0f3F800000; selp.b32 %r3, 1, 0, %p2;", [1] * 4),
            ("mov.b64 %rd4, 0d3FF0000000000000; shr.u64 %rd5, %rd4, 32; cvt.u32.u64 %r3, %rd5;",
             [0x3FF00000] * 4),
            ("mov.f32 %f1, 0f40200000; cvt.rni.s32.f32 %r3, %f1;", [2] * 4),
            ("mov.f32 %f1, 0f7FC00000; setp.ltu.f32 %p2, %f1, %f1; selp.b32 %r3, 1, 0, %p2;", [1] * 4),
            ("mov.f32 %f1, 0f7FC00000; setp.ne.f32 %p2, %f1, %f1; selp.b32 %r3, 1, 0, %p2;", [0] * 4),
        ):  # fmt: skip
            self.assertEqual(self.results(body), expected, body)

    def test_what_is_unknown_is_an_error_with_its_text(self):
        for body in ("ex2.approx.f32 %f1, %f2;", "add.ftz.f32 %f1, %f2, %f3;", "add.s32 %r3, %rd1, 1;",
                     "ld.global.u32 %r3, [%rd3+x];", "add.s32 %r3, %laneid, 1;", "call foo;"):  # fmt: skip
            with self.assertRaises(UnknownPtx, msg=body) as error:
                self.results(body)
            self.assertIn(body.split()[0], str(error.exception))

    def test_no_access_outside(self):
        for body in ("add.s64 %rd3, %rd3, 16; mov.u32 %r3, 1;", "add.s64 %rd3, %rd3, -4; mov.u32 %r3, 1;",
                     "add.s64 %rd3, %rd3, 2; mov.u32 %r3, 1;", "ld.global.u32 %r3, [%rd3];",
                     "mov.u64 %rd3, %rd1; mov.u32 %r3, 1;", "mov.u32 %r3, %r7;"):  # fmt: skip
            with self.assertRaises(BadAccess, msg=body):
                self.results(body)

    def test_a_register_is_read_only_by_threads_that_have_written_it(self):
        write = "mov.u32 %r3, 1; setp.lt.u32 %p2, %r1, 2; @%p2 mov.u32 %r4, 9; "
        branch = "mov.u32 %r3, 1; setp.lt.u32 %p2, %r1, 2; @!%p2 bra $on; mov.u32 %r4, 9; $on: "
        for body in (write + "mov.u32 %r3, %r4;", write + "@!%p2 mov.u32 %r3, %r4;",
                     write + "@%p2 mov.u32 %r4, 8; mov.u32 %r3, %r4;", branch + "mov.u32 %r3, %r4;",
                     branch + "@%p2 mov.u32 %r4, 8; mov.u32 %r3, %r4;",
                     "setp.lt.u32 %p2, %r1, 2; @%p2 setp.lt.u32 %p0, %r1, 1; selp.b32 %r3, 1, 0, %p0;",
                     ):  # fmt: skip
            with self.assertRaises(BadAccess, msg=body):
                self.results(body)
        for body, expected in (
            (write + "@%p2 add.s32 %r3, %r4, 1;", [10, 10, 1, 1]),
            (write + "@!%p2 mov.u32 %r4, 5; mov.u32 %r3, %r4;", [9, 9, 5, 5]),
            (write + "mov.u32 %r4, %r1; mov.u32 %r3, %r4;", [0, 1, 2, 3]),
            (write + "mov.u32 %r4, 5; @%p2 mov.u32 %r3, %r4;", [5, 5, 1, 1]),
            (write + "@!%p2 bra $on; mov.u32 %r3, %r4; $on:", [9, 9, 1, 1]),
            (branch + "@%p2 add.s32 %r3, %r4, 1;", [10, 10, 1, 1]),
            (branch + "@!%p2 mov.u32 %r4, %r1; mov.u32 %r3, %r4;", [9, 9, 2, 3]),
        ):
            self.assertEqual(self.results(body), expected, body)

    def test_local_memory_has_bounds_and_is_read_after_it_is_written(self):
        arrays = ".local .align 8 .b8 a[12]; .local .align 8 .b8 b[16]; mov.u64 %rd4, a; mov.u64 %rd5, b; "
        fill = "st.local.u32 [%rd5], %r1; st.local.u32 [%rd5+4], 7; mov.u32 %r3, 1; "
        guarded = "mov.u32 %r3, 1; setp.lt.u32 %p2, %r1, 2; @%p2 st.local.u32 [%rd4+8], 9; "
        for body in ("ld.local.u32 %r3, [%rd4];", "st.local.u32 [%rd4], 1; ld.local.u32 %r3, [%rd4+4];",
                     fill + "ld.local.u64 %rd6, [%rd5+8];", fill + "st.local.u32 [%rd4+12], 1;",
                     "st.local.u32 [%rd4], 1; ld.local.u64 %rd6, [%rd4]; mov.u32 %r3, 1;",
                     fill + "st.local.u64 [%rd4+8], 1;", fill + "st.local.u32 [%rd4+16], 1;",
                     fill + "st.local.u32 [%rd5+-4], 1;", fill + "st.local.u32 [%rd5+16], 1;",
                     fill + "st.local.u32 [%rd4+-4], 1;", fill + "ld.local.u32 %r3, [%rd4+12];",
                     guarded + "ld.local.u32 %r3, [%rd4+8];"):  # fmt: skip
            with self.assertRaises(BadAccess, msg=body):
                self.results(arrays + body)
        for body, expected in (
            (fill + "ld.local.u32 %r3, [%rd5];", [0, 1, 2, 3]),
            (fill + "ld.local.u64 %rd6, [%rd5]; shr.u64 %rd6, %rd6, 32; cvt.u32.u64 %r3, %rd6;", [7] * 4),
            ("st.local.u64 [%rd4], 30064771072; ld.local.u32 %r3, [%rd4+4];", [7] * 4),
            (guarded + "@%p2 ld.local.u32 %r3, [%rd4+8];", [9, 9, 1, 1]),
        ):
            self.assertEqual(self.results(arrays + body), expected, body)

    def test_sums_of_products_may_be_fused(self):
        """Subtracts the rounded product from (1 + 2^-12)²: the rounding removes its last bit, 2^-24."""
        numbers = "mov.f32 %f1, 0f3F800800; mul.f32 %f2, %f1, %f1; mov.f32 %f3, 0f3F801000; "
        fused, rounded = 0x33800000, 0
        for body, is_fused, minus in (
            ("sub.f32 %f4, %f2, %f3;", True, 0), ("sub.f32 %f4, %f3, %f2;", True, 1 << 31),
            ("neg.f32 %f5, %f3; add.f32 %f4, %f5, %f2;", True, 0),
            ("neg.f32 %f5, %f3; add.f32 %f2, %f2, %f5; mov.f32 %f4, %f2;", True, 0),
            ("sub.rn.f32 %f4, %f2, %f3;", False, 0), ("mov.f32 %f2, %f3; sub.f32 %f4, %f2, %f3;", False, 0),
            ("mov.f32 %f1, 0f00000000; sub.f32 %f4, %f2, %f3;", False, 0),
            ("mul.rn.f32 %f2, %f1, %f1; sub.f32 %f4, %f2, %f3;", False, 0),
            ("setp.lt.u32 %p2, %r1, 2; @%p2 mul.f32 %f2, %f1, %f1; sub.f32 %f4, %f2, %f3;", False, 0),
            ("mov.f32 %f2, %f1; mul.f32 %f2, %f2, %f2; sub.f32 %f4, %f2, %f3;", False, 0),
            ("setp.lt.u32 %p2, %r1, 99; @%p2 sub.f32 %f4, %f2, %f3;", True, 0),
            ("bra.uni $on; $on: sub.f32 %f4, %f2, %f3;", False, 0),
        ):  # fmt: skip
            body = numbers + body + "mov.b32 %r3, %f4;"
            found = {n & 0xFFFFFFFF for n in self.results(body, threads=32, is_off=True)}
            self.assertEqual(found, {fused | minus, rounded} if is_fused else {rounded}, body)
            self.assertEqual(self.results(body, threads=32), [rounded] * 32, body)


if __name__ == "__main__":
    unittest.main()
