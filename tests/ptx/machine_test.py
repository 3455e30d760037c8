"""machine_test.py: translate.py and machine.h do what the PTX manual says; approximations are as far off
as they may be; unknown instructions and wrong accesses are errors.

Exits with 77 without numpy."""

import unittest

from prerequisites import numpy_or_skip

numpy_or_skip()

import numpy as np

from launch import Memory, Program, Shape, WrongRun
from ptx_text import UnknownPtx, read_module
from translate import Translator

KERNEL = """
.visible .entry kernel(.param .u64 out, .param .u32 count) {
  .reg .pred %%p<3>; .reg .f32 %%f<9>; .reg .f64 %%fd<9>; .reg .b16 %%rs<9>; .reg .b32 %%r<9>; .reg .b64 %%rd<9>;
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

# What each of four threads stores after a piece of code.
INTEGERS = {
    "sub.s32 %r4, %r1, 3; div.s32 %r3, %r4, 2;": [-1, -1, 0, 0],
    "sub.s32 %r4, %r1, 3; rem.s32 %r3, %r4, 2;": [-1, 0, -1, 0],
    "sub.s32 %r4, %r1, 3; shr.s32 %r3, %r4, 40;": [-1, -1, -1, 0],
    "shl.b32 %r3, 1, 32;": [0] * 4,
    "shf.l.wrap.b32 %r3, -1, %r1, 33;": [1, 3, 5, 7],
    "mov.u64 %rd4, 5; mov.u64 %rd5, -1; bfi.b64 %rd6, %rd4, %rd5, 4, 8; cvt.u32.u64 %r3, %rd6;": [-4096 + 0x5F] * 4,
    "mov.b32 %r4, 1000; bfe.u32 %r3, %r4, %r1, 4;": [1000 >> n & 15 for n in range(4)],
    "mov.b32 %r3, 0f3F800000;": [0x3F800000] * 4,
    "setp.lt.u32 %p2, %r1, 3; selp.b32 %r3, 0f3F800000, 0f40000000, %p2;": [0x3F800000] * 3 + [0x40000000],
    "mov.f32 %f1, 0f3F800000; setp.eq.b32 %p2, %f1, 0f3F800000; selp.b32 %r3, 1, 0, %p2;": [1] * 4,
    "mov.b64 %rd4, 0d3FF0000000000000; shr.u64 %rd5, %rd4, 32; cvt.u32.u64 %r3, %rd5;": [0x3FF00000] * 4,
    "mov.f32 %f1, 0f40200000; cvt.rni.s32.f32 %r3, %f1;": [2] * 4,
    "mov.f32 %f1, 0fC0700000; cvt.rzi.s32.f32 %r3, %f1;": [-3] * 4,
    "mov.f32 %f1, 0f7FC00000; max.f32 %f2, %f1, 0f40000000; cvt.rzi.s32.f32 %r3, %f2;": [2] * 4,
    "mov.f32 %f1, 0f40400000; min.f32 %f2, %f1, 0f40000000; cvt.rzi.s32.f32 %r3, %f2;": [2] * 4,
    "sub.s32 %r4, %r1, 2; cvt.s32.s8 %r3, %r4; add.s32 %r3, %r3, 256; cvt.u16.u32 %rs1, %r3; "
    "and.b16 %rs2, %rs1, 255; cvt.u32.u16 %r3, %rs2;": [254, 255, 0, 1],
    "setp.lt.u32 %p2, %r1, 2; selp.u16 %rs1, 7, 0, %p2; setp.ne.s16 %p1, %rs1, 0; selp.b32 %r3, 1, 0, %p1;": [1, 1, 0, 0],
    "mov.f32 %f1, 0f7FC00000; setp.ltu.f32 %p2, %f1, %f1; selp.b32 %r3, 1, 0, %p2;": [1] * 4,
    "mov.f32 %f1, 0f7FC00000; setp.ne.f32 %p2, %f1, %f1; selp.b32 %r3, 1, 0, %p2;": [0] * 4,
    "mov.pred %p1, -1; mov.pred %p2, 0; selp.b32 %r3, 5, 6, %p1; @%p2 mov.u32 %r3, 7;": [5] * 4,
    # They go their own ways and meet again.
    """mov.u32 %r3, 0; mov.u32 %r4, 0; $again: add.s32 %r3, %r3, %r4; add.s32 %r4, %r4, 1;
       setp.le.s32 %p2, %r4, %r1; @%p2 bra $again; @!%p2 add.s32 %r3, %r3, 100;""": [100, 101, 103, 106],
    # A subnormal number is none for the approximations: its root is 0 and its inverse infinite.
    "mov.f32 %f1, 0f000AE398; sqrt.approx.ftz.f32 %f2, %f1; mov.b32 %r3, %f2;": [0] * 4,
    "mov.f32 %f1, 0f800AE398; rcp.approx.ftz.f32 %f2, %f1; mov.b32 %r3, %f2;": [0xFF800000 - 2**32] * 4,
    "mov.f32 %f1, 0f7F000000; rcp.approx.ftz.f32 %f2, %f1; mov.b32 %r3, %f2;": [0] * 4,
}

# A register, or local memory, is read only by threads that have written it.
WRITE = "mov.u32 %r3, 1; setp.lt.u32 %p2, %r1, 2; @%p2 mov.u32 %r4, 9; "
BRANCH = "mov.u32 %r3, 1; setp.lt.u32 %p2, %r1, 2; @!%p2 bra $on; mov.u32 %r4, 9; $on: "
ARRAYS = ".local .align 8 .b8 a[12]; .local .align 8 .b8 b[16]; mov.u64 %rd4, a; mov.u64 %rd5, b; mov.u32 %r3, 1; "
FILL = ARRAYS + "st.local.u32 [%rd5], %r1; st.local.u32 [%rd5+4], 7; "
GUARDED = ARRAYS + "setp.lt.u32 %p2, %r1, 2; @%p2 st.local.u32 [%rd4+8], 9; "
RIGHT = {
    WRITE + "@%p2 add.s32 %r3, %r4, 1;": [10, 10, 1, 1],
    WRITE + "@!%p2 mov.u32 %r4, 5; mov.u32 %r3, %r4;": [9, 9, 5, 5],
    WRITE + "@!%p2 bra $on; mov.u32 %r3, %r4; $on:": [9, 9, 1, 1],
    BRANCH + "@!%p2 mov.u32 %r4, %r1; mov.u32 %r3, %r4;": [9, 9, 2, 3],
    FILL + "ld.local.u32 %r3, [%rd5];": [0, 1, 2, 3],
    FILL + "cvta.local.u64 %rd6, %rd5; st.u32 [%rd6], 6; ld.local.u32 %r3, [%rd5];": [6] * 4,
    FILL + "cvta.local.u64 %rd6, %rd5; ld.u32 %r3, [%rd6];": [0, 1, 2, 3],
    FILL + "mov.u32 %r4, 513; cvt.u16.u32 %rs1, %r4; st.local.v2.u8 [%rd4+8], {%rs1, %rs1}; "
    "ld.local.u8 %rs2, [%rd4+9]; cvt.u32.u16 %r3, %rs2;": [1] * 4,
    FILL + "ld.local.u64 %rd6, [%rd5]; shr.u64 %rd6, %rd6, 32; cvt.u32.u64 %r3, %rd6;": [7] * 4,
    GUARDED + "@%p2 ld.local.u32 %r3, [%rd4+8];": [9, 9, 1, 1],
}
WRONG = [
    "mov.u32 %r3, %r7;", WRITE + "mov.u32 %r3, %r4;", WRITE + "@!%p2 mov.u32 %r3, %r4;", BRANCH + "mov.u32 %r3, %r4;",
    "setp.lt.u32 %p2, %r1, 2; @%p2 setp.lt.u32 %p0, %r1, 1; selp.b32 %r3, 1, 0, %p0;",
    *("mov.u32 %r3, 1; " + code for code in (
        "add.s64 %rd3, %rd3, 16;", "add.s64 %rd3, %rd3, -4;", "add.s64 %rd3, %rd3, 2;", "mov.u64 %rd3, %rd1;",
        "ld.global.u32 %r3, [%rd3];", "ld.u32 %r3, [%rd3];", "st.u32 [%rd3+16], %r3;",
        "ld.const.u32 %r3, [%rd3];", "div.s32 %r3, %r3, 0;", "$on: bra $on;")),
    ARRAYS + "ld.local.u32 %r3, [%rd4];", ARRAYS + "st.local.u32 [%rd4], 1; ld.local.u64 %rd6, [%rd4];",
    GUARDED + "ld.local.u32 %r3, [%rd4+8];",
    *(FILL + code for code in (
        "ld.local.u64 %rd6, [%rd5+8];", "st.local.u64 [%rd4+8], 1;", "st.local.u32 [%rd4+12], 1;",
        "st.local.u32 [%rd4+16], 1;", "st.local.u32 [%rd5+-4], 1;", "st.local.u32 [%rd5+16], 1;",
        "st.local.u32 [%rd4+-4], 1;", "ld.local.u32 %r3, [%rd4+12];",
        "cvta.local.u64 %rd6, %rd5; ld.u32 %r3, [%rd6+8];", "cvta.local.u64 %rd6, %rd5; st.u32 [%rd6+16], 1;")),
]  # fmt: skip
# What four threads store after what was there.
STATES = {
    "ld.global.u32 %r3, [%rd3]; add.s32 %r3, %r3, 10;": [15, 16, 17, 18],
    # The previous thread's has been stored to.
    "mov.u32 %r3, 1; setp.gt.u32 %p2, %r1, 0; add.s64 %rd4, %rd3, -4; @%p2 ld.global.u32 %r3, [%rd4];": None,
}
UNKNOWN = ["ex2.approx.f32 %f1, %f2;", "add.ftz.f32 %f1, %f2, %f3;", "add.s32 %r3, %rd1, 1;",
           "ld.global.u32 %r3, [%rd3+x];", "add.s32 %r3, %laneid, 1;", "call foo;", "bra $nowhere;"]  # fmt: skip

# (1 + 2^-12)² and the product rounded, that is without its last digit 2^-24, from it.
NUMBERS = "mov.f32 %f1, 0f3F800800; mul.f32 %f2, %f1, %f1; mov.f32 %f3, 0f3F801000; "
FUSED = {
    "sub.f32 %f4, %f2, %f3;": 0x33800000,
    "sub.f32 %f4, %f3, %f2;": 0xB3800000,
    "neg.f32 %f5, %f3; add.f32 %f4, %f5, %f2;": 0x33800000,
    "neg.f32 %f5, %f3; add.f32 %f2, %f2, %f5; mov.f32 %f4, %f2;": 0x33800000,
    "setp.lt.u32 %p2, %r1, 99; @%p2 sub.f32 %f4, %f2, %f3;": 0x33800000,
    "sub.rn.f32 %f4, %f2, %f3;": 0,
    "mov.f32 %f2, %f3; sub.f32 %f4, %f2, %f3;": 0,
    "mov.f32 %f1, 0f00000000; sub.f32 %f4, %f2, %f3;": 0,
    "mul.rn.f32 %f2, %f1, %f1; sub.f32 %f4, %f2, %f3;": 0,
    "setp.lt.u32 %p2, %r1, 2; @%p2 mul.f32 %f2, %f1, %f1; sub.f32 %f4, %f2, %f3;": 0,
    "mov.f32 %f2, %f1; mul.f32 %f2, %f2, %f2; sub.f32 %f4, %f2, %f3;": 0,
    "bra.uni $on; $on: sub.f32 %f4, %f2, %f3;": 0,
}
ROOT, INVERSE = (f"cvt.rn.f32.u32 %f1, %r1; add.f32 %f1, %f1, 0f40400000; {opcode}.approx.ftz.f32 %f2, %f1; "
                 "mov.b32 %r3, %f2;" for opcode in ("sqrt", "rcp"))  # fmt: skip


def read(body):
    return read_module(KERNEL % body).kernels[0]


class Machine(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        fused = [NUMBERS + body + "mov.b32 %r3, %f4;" for body in FUSED]
        cls.bodies = [*INTEGERS, *RIGHT, *WRONG, *STATES, *fused, ROOT, INVERSE]
        cls.program = Program([read(body) for body in cls.bodies], {})

    def results(self, body, threads=4, **launch):
        memory = Memory()
        address = memory.room(4 * threads)
        self.program.run(Shape((1, 1, 1), 64), [address, threads], memory, self.bodies.index(body), **launch)
        return memory.results(address, np.int32)

    def test_of_right_code_has_its_results(self):
        for body, expected in {**INTEGERS, **RIGHT}.items():
            self.assertEqual(self.results(body).tolist(), expected, body)

    def test_of_wrong_code_has_an_error(self):
        for body in WRONG:
            with self.assertRaises(WrongRun, msg=body):
                self.results(body)
        with self.assertRaises(WrongRun):
            self.results("shl.b32 %r3, 1, 32;", points=3)

    def test_a_state_is_read_until_it_is_stored_to(self):
        for body, expected in STATES.items():
            memory = Memory()
            address = memory.state(np.array([5, 6, 7, 8], np.int32))
            launch = (Shape((1, 1, 1), 64), [address, 4], memory, self.bodies.index(body))
            if expected is None:
                self.assertRaises(WrongRun, self.program.run, *launch)
            else:
                self.program.run(*launch)
                self.assertEqual(memory.results(address, np.int32).tolist(), expected)

    def test_of_unknown_code_has_an_error_with_its_text(self):
        for body in UNKNOWN:
            with self.assertRaises(UnknownPtx, msg=body) as error:
                Translator(read(body), {})
            self.assertIn(body.split()[0].strip(";"), str(error.exception))

    def test_sums_of_products_may_be_fused(self):
        for body, fused in FUSED.items():
            body = NUMBERS + body + "mov.b32 %r3, %f4;"
            self.assertEqual(set(self.results(body, 64, is_off=True).view(np.uint32)), {0, fused}, body)
            self.assertEqual(set(self.results(body, 64)), {0}, body)

    def test_approximations_are_as_far_off_as_they_may_be(self):
        a = np.arange(3.0, 67)
        inverse = (1 / a).astype(np.float32)
        for body, exact, most in ((ROOT, np.sqrt(a), np.sqrt(a) * 2.0**-23), (INVERSE, 1 / a, np.spacing(inverse))):
            found = [self.results(body, 64, is_off=True, seed=n).view(np.float32) for n in range(40)]
            for farthest, beyond in ((np.min(found, axis=0), -np.inf), (np.max(found, axis=0), np.inf)):
                self.assertTrue((np.abs(farthest - exact) <= most).all())
                self.assertTrue((np.abs(np.nextafter(farthest, np.float32(beyond)) - exact) > most).all())
            self.assertTrue((self.results(body, 64).view(np.float32) == exact.astype(np.float32)).all())


if __name__ == "__main__":
    unittest.main()
