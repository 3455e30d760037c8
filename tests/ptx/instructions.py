"""Executes each instruction as the PTX manual defines it, for all threads of a group at once.

Registers are arrays with one element per thread, or a single element if all threads have the same value. Only
instructions whose opcode, including modifiers, is listed here are supported."""

import re
from collections import Counter
from dataclasses import dataclass

import numpy as np

import arithmetic
from memory import BadAccess, LocalMemory
from ptx_text import UnknownPtx

DTYPES = {
    "b32": np.uint32, "u32": np.uint32, "s32": np.int32, "f32": np.float32,
    "b64": np.uint64, "u64": np.uint64, "s64": np.int64, "f64": np.float64, "pred": np.bool_,
}  # fmt: skip
DTYPES = {name: np.dtype(dtype) for name, dtype in DTYPES.items()}
U32, S32, F32, U64, S64, F64 = (DTYPES[name] for name in ("u32", "s32", "f32", "u64", "s64", "f64"))


@dataclass
class Step:
    """A decoded instruction. `run(group)` reads and writes the group's registers."""

    text: str
    reads: list
    writes: list
    run: object
    target: str = ""  # of a branch; `run` returns the threads that take it
    ends: bool = False  # no thread goes on to the next instruction


# Opcodes that compute, each with the types of its operands (the result first) and its function.

COMPUTE = {}


def shift_left(a, count):
    bits = a.itemsize * 8
    kept = np.minimum(count, bits - 1).astype(a.dtype)
    return np.where(count < bits, a << kept, a.dtype.type(0))


def shift_right(a, count):
    bits = a.itemsize * 8
    kept = np.minimum(count, bits - 1).astype(a.dtype)
    if a.dtype.kind == "i":
        return a >> kept
    return np.where(count < bits, a >> kept, a.dtype.type(0))


def funnel_left(low, high, count):
    """The upper word of high:low, shifted left by count modulo 32."""
    both = high.astype(U64) << U64.type(32) | low
    return (both << (count & U32.type(31)).astype(U64) >> U64.type(32)).astype(U32)


def insert_bits(field, into, position, length):
    position, length = (np.minimum(v & U32.type(255), 64) for v in (position, length))
    mask = shift_left(shift_left(U64.type(1) + 0 * field, length) - U64.type(1), position)
    return into & ~mask | shift_left(field, position) & mask


def extract_bits(a, position, length):
    position, length = (np.minimum(v & U32.type(255), 64).astype(U64) for v in (position, length))
    mask = shift_left(U64.type(1) + 0 * length, length) - U64.type(1)
    return (shift_right(a.astype(U64), position) & mask).astype(U32)


def quotient(a, b):
    if (b == 0).any():
        raise ArithmeticError("a division by zero")
    a, b = a.astype(S64), b.astype(S64)
    return (np.sign(a) * np.sign(b) * (np.abs(a) // np.abs(b))).astype(S32)


def remainder(a, b):
    return (a - quotient(a, b) * b).astype(S32)


def to_s32(a):
    """Converts to the nearest integer, numbers out of range to the nearest limit, and NaN to 0."""
    rounded = np.rint(a.astype(F64))
    return np.where(np.isnan(rounded), 0, np.clip(rounded, -(2.0**31), 2.0**31 - 1)).astype(S32)


def wide(dtype):
    return lambda a, b: a.astype(dtype) * b.astype(dtype)


def is_not(function):
    return lambda a, b: ~function(a, b)


def ordered_and_not_equal(a, b):
    return (a < b) | (a > b)


INTEGER_ORDER = {"lt": np.less, "le": np.less_equal, "gt": np.greater, "ge": np.greater_equal}
# Comparisons with a NaN are false, except that those with a u are true.
FLOAT_ORDER = {**INTEGER_ORDER, "eq": np.equal, "ne": ordered_and_not_equal}
OPPOSITE = {"lt": "ge", "le": "gt", "gt": "le", "ge": "lt", "eq": "ne", "ne": "eq"}


def define(opcode, types, function):
    COMPUTE[opcode] = ([DTYPES[name] for name in types.split()], function)


for t in ("f32", "f64"):
    for suffix in (t, f"rn.{t}"):
        define(f"add.{suffix}", f"{t} {t} {t}", np.add)
        define(f"sub.{suffix}", f"{t} {t} {t}", np.subtract)
        define(f"mul.{suffix}", f"{t} {t} {t}", np.multiply)
    define(f"neg.{t}", f"{t} {t}", np.negative)
    define(f"abs.{t}", f"{t} {t}", np.abs)
    define(f"sqrt.rn.{t}", f"{t} {t}", np.sqrt)
    define(f"rcp.rn.{t}", f"{t} {t}", np.reciprocal)
    define(f"div.rn.{t}", f"{t} {t} {t}", np.divide)
    for name, function in FLOAT_ORDER.items():
        define(f"setp.{name}.{t}", f"pred {t} {t}", function)
        define(f"setp.{name}u.{t}", f"pred {t} {t}", is_not(FLOAT_ORDER[OPPOSITE[name]]))
define("fma.rn.f32", "f32 f32 f32 f32", arithmetic.fma32)
define("fma.rn.f64", "f64 f64 f64 f64", arithmetic.fma64)

for bits in ("32", "64"):
    for t in (f"s{bits}", f"u{bits}"):
        define(f"add.{t}", f"{t} {t} {t}", np.add)
        define(f"sub.{t}", f"{t} {t} {t}", np.subtract)
        define(f"mul.lo.{t}", f"{t} {t} {t}", np.multiply)
        define(f"mad.lo.{t}", f"{t} {t} {t} {t}", lambda a, b, c: a * b + c)
        define(f"min.{t}", f"{t} {t} {t}", np.minimum)
        define(f"max.{t}", f"{t} {t} {t}", np.maximum)
        define(f"shr.{t}", f"{t} {t} u32", shift_right)
        for name, function in INTEGER_ORDER.items():
            define(f"setp.{name}.{t}", f"pred {t} {t}", function)
    t = f"b{bits}"
    define(f"neg.s{bits}", f"s{bits} s{bits}", np.negative)
    define(f"shl.{t}", f"{t} {t} u32", shift_left)
    define(f"shr.{t}", f"{t} {t} u32", shift_right)
    for kind in "bsu":
        define(f"setp.eq.{kind}{bits}", f"pred {t} {t}", np.equal)
        define(f"setp.ne.{kind}{bits}", f"pred {t} {t}", np.not_equal)
for t in ("pred", "b32", "b64"):
    define(f"and.{t}", f"{t} {t} {t}", np.bitwise_and)
    define(f"or.{t}", f"{t} {t} {t}", np.bitwise_or)
    define(f"xor.{t}", f"{t} {t} {t}", np.bitwise_xor)
    define(f"not.{t}", f"{t} {t}", np.invert)
for t in DTYPES:
    define(f"mov.{t}", f"{t} {t}", lambda a: a)
    if t != "pred":
        define(f"selp.{t}", f"{t} {t} {t} pred", lambda a, b, p: np.where(p, a, b))
for kind in "su":
    define(f"mul.wide.{kind}32", f"{kind}64 {kind}32 {kind}32", wide(DTYPES[f"{kind}64"]))
    define(f"mad.wide.{kind}32", f"{kind}64 {kind}32 {kind}32 {kind}64",
           lambda a, b, c: a.astype(c.dtype) * b.astype(c.dtype) + c)  # fmt: skip
define("div.s32", "s32 s32 s32", quotient)
define("rem.s32", "s32 s32 s32", remainder)
define("bfi.b64", "b64 b64 b64 u32 u32", insert_bits)
define("bfe.u32", "u32 u32 u32 u32", extract_bits)
define("shf.l.wrap.b32", "b32 b32 b32 u32", funnel_left)
for to, of in (
    ("rn.f32", "f64"), ("f64", "f32"), ("rn.f32", "s32"), ("rn.f32", "u32"), ("rn.f64", "s32"),
    ("rn.f64", "u32"), ("rn.f64", "s64"), ("rn.f32", "s64"), ("u64", "u32"), ("s64", "s32"),
    ("u32", "u64"), ("s32", "s64"),
):  # fmt: skip
    dtype = DTYPES[to.removeprefix("rn.")]
    define(f"cvt.{to}.{of}", f"{to.removeprefix('rn.')} {of}",
           lambda a, dtype=dtype: a.astype(dtype))  # fmt: skip
define("cvt.rni.s32.f32", "s32 f32", to_s32)
define("cvta.to.global.u64", "u64 u64", lambda a: a)  # generic addresses equal those of global memory

# Sums that ptxas may fuse with an unrounded product, unless they specify a rounding mode, with the sign of
# each operand.
PRODUCTS = {"mul.f32", "mul.f64"}
SUMS = {"add.f32": (1, 1), "sub.f32": (1, -1), "add.f64": (1, 1), "sub.f64": (1, -1)}

# Approximate operations, which are accurate to about a unit in the last place and can be made to differ by as
# much.
APPROXIMATE = {
    "sqrt.approx.ftz.f32": arithmetic.sqrt_approx,
    "rcp.approx.ftz.f32": arithmetic.rcp_approx,
}

SPECIAL = {f"%{name}.{axis}" for name in ("ctaid", "nctaid") for axis in "xyz"} | {"%tid.x", "%ntid.x"}
LOCAL = "local memory"  # the register that represents a thread's own memory
ACCESS = re.compile(r"(ld|st)\.(param|const|global|global\.nc|local)(?:\.v([24]))?\.([bsuf](?:32|64))$")
ADDRESS = re.compile(r"\[([%\w$]+)(?:\+(-?\d+))?\]$")


class Decoder:
    """Turns the instructions of one kernel into steps; `symbols` are addresses by name."""

    def __init__(self, kernel, symbols):
        self.kernel, self.local = kernel, LocalMemory(kernel.local)
        self.symbols = {**symbols, **self.local.address}
        self.writes = Counter()  # how often each register was written, up to the last instruction
        self.forget_products()

    def forget_products(self):
        """Called where threads may arrive from another block."""
        self.products = {}  # by register: the factors, and the number of writes to all three

    def step(self, instruction):
        self.text = instruction.text
        opcode, operands = instruction.opcode, instruction.operands
        if opcode in ("bra", "bra.uni", "ret"):
            return self.jump(instruction)
        if opcode in COMPUTE:
            step = self.compute(operands, *COMPUTE[opcode])
            if opcode in SUMS:
                step = self.perhaps_fused(step, opcode, operands)
        elif opcode in APPROXIMATE:
            step = self.approximate(operands, APPROXIMATE[opcode])
        elif ACCESS.match(opcode):
            step = self.access(operands, *ACCESS.match(opcode).groups())
        else:
            raise UnknownPtx(self.text)
        self.writes.update(step.writes)
        if instruction.guard:
            return self.guarded(step, instruction)
        if opcode in PRODUCTS and operands[0] not in operands[1:]:
            self.products[operands[0]] = operands[1:], self.counts(operands)
        return step

    def counts(self, registers):
        return [self.writes[name] for name in registers]

    def require(self, condition):
        if not condition:
            raise UnknownPtx(self.text)

    def jump(self, instruction):
        taken = self.predicate(instruction) if instruction.guard else None
        self.require(instruction.opcode != "ret" or not instruction.guard)
        target = instruction.operands[0] if instruction.operands else ""
        self.require((target in self.kernel.labels) == (instruction.opcode != "ret"))
        reads = [instruction.guard] if instruction.guard else []
        return Step(self.text, reads, [], taken, target, ends=not instruction.guard)

    @staticmethod
    def predicate(instruction):
        guard = instruction.guard
        if instruction.guard_negated:
            return lambda group: ~group.registers[guard]
        return lambda group: group.registers[guard]

    def guarded(self, step, instruction):
        """Executes the step only in threads whose predicate holds; the others keep their values."""
        predicate = self.predicate(instruction)

        def run(group):
            mask = np.broadcast_to(predicate(group), group.threads.shape)
            if mask.any():
                some = group.part(mask, set(step.reads))
                step.run(some)
                for name in step.writes:
                    group.write_some(mask, name, some.registers[name])

        return Step(step.text, [*step.reads, instruction.guard, *step.writes], step.writes, run)

    def destination(self, operand, dtype):
        self.require(operand.startswith("%") and "." not in operand)
        bits = 1 if dtype == np.bool_ else dtype.itemsize * 8
        self.require(self.kernel.width(operand) == bits)
        return operand

    def operand(self, text, dtype):
        """A function that reads an operand as `dtype`, and a list with its register, if it is one."""
        if text.startswith("%"):
            bits = 1 if dtype == np.bool_ else dtype.itemsize * 8
            self.require((32 if text in SPECIAL else self.kernel.width(text)) == bits)

            def register(group):
                value = group.registers[text]
                return value if value.dtype is dtype else value.view(dtype)

            return register, [text]
        constant = np.array([self.immediate(text, dtype)], dtype)
        return (lambda group: constant), []

    def immediate(self, text, dtype):
        if text in self.symbols:
            self.require(dtype == U64)
            return self.symbols[text]
        bits = re.fullmatch(r"0([fd])([0-9A-Fa-f]{8}|[0-9A-Fa-f]{16})", text)
        if bits:
            size = {"f": 4, "d": 8}[bits.group(1)]
            self.require(len(bits.group(2)) == 2 * size == 2 * dtype.itemsize)
            return np.array([int(bits.group(2), 16)], f"u{size}").view(dtype)[0]
        whole = re.fullmatch(r"-?(\d+|0[xX][0-9A-Fa-f]+)", text)
        self.require(whole and dtype.kind in "iu")
        value = int(text, 0) % (1 << 8 * dtype.itemsize)
        return np.array([value], f"u{dtype.itemsize}").view(dtype)[0]

    def compute(self, operands, types, function):
        self.require(len(operands) == len(types))
        target = self.destination(operands[0], types[0])
        sources, reads = [], []
        for text, dtype in zip(operands[1:], types[1:]):
            source, names = self.operand(text, dtype)
            sources.append(source)
            reads += names
        if len(sources) == 1:
            (first,) = sources

            def run(group):
                group.registers[target] = function(first(group))

        elif len(sources) == 2:
            first, second = sources

            def run(group):
                group.registers[target] = function(first(group), second(group))

        else:

            def run(group):
                group.registers[target] = function(*(source(group) for source in sources))

        return Step(self.text, reads, [target], run)

    def perhaps_fused(self, step, opcode, operands):
        """A sum or difference that, at random, is fused with the unrounded product."""
        target, *summands = operands
        for place, name in enumerate(summands):
            factors, counts = self.products.get(name, ((), ()))
            if factors and counts == self.counts([name, *factors]):
                break
        else:
            return step
        fma, (dtype, *_) = COMPUTE[f"fma.rn.{opcode[-3:]}"][1], COMPUTE[opcode][0]
        found = [self.operand(text, dtype) for text in (*factors, summands[1 - place])]
        (first, second, other), reads = zip(*found)
        sign, other_sign = (dtype.type(SUMS[opcode][n]) for n in (place, 1 - place))

        def run(group):
            fused = fma(sign * first(group), second(group), other_sign * other(group))
            step.run(group)
            group.registers[target] = np.where(group.fuses(), fused, group.registers[target])

        return Step(self.text, [*step.reads, *sum(reads, [])], step.writes, run)

    def approximate(self, operands, function):
        self.require(len(operands) == 2)
        target = self.destination(operands[0], F32)
        source, reads = self.operand(operands[1], F32)

        def run(group):
            group.registers[target] = function(source(group), group.ways_off())

        return Step(self.text, reads, [target], run)

    def access(self, operands, what, space, count, type_name):
        dtype = DTYPES[type_name]
        self.require(len(operands) == 2)
        values, place = operands if what == "ld" else reversed(operands)
        values = values.strip("{}").replace(",", " ").split()
        self.require(len(values) == int(count or 1))
        found = ADDRESS.match(place)
        self.require(found)
        name, offset = found.group(1), int(found.group(2) or 0)
        if space == "param":
            self.require(what == "ld" and not count and not offset)
            self.require((type_name[1:], name) in [(t[1:], n) for t, n in self.kernel.parameters])
            target = self.destination(values[0], dtype)
            return Step(self.text, [], [target], lambda group: group.load_parameter(target, name, dtype))
        base, reads = self.operand(name, U64)
        whole = len(values) * dtype.itemsize

        def address(group, part):
            start = base(group) + U64.type(offset % (1 << 64))
            if (start % U64.type(whole) != 0).any():
                raise BadAccess("an address that is not aligned")
            return start + U64.type(part * dtype.itemsize)

        if what == "ld":
            return self.load(values, dtype, space, address, reads)
        self.require(space in ("global", "local"))
        return self.store(values, dtype, space, address, reads)

    def load(self, values, dtype, space, address, reads):
        # A register may be wider than the loaded value, which is then extended with zeros or its sign.
        widths = [self.kernel.width(value) for value in values]
        self.require(all(width >= 8 * dtype.itemsize for width in widths))
        wider = [None if w == 8 * dtype.itemsize else np.dtype(dtype.kind + "8") for w in widths]
        self.require(dtype.kind != "f" or not any(wider))

        def run(group):
            for part, (target, extended) in enumerate(zip(values, wider)):
                value = group.load(space, address(group, part), dtype)
                group.registers[target] = value if extended is None else value.astype(extended)

        if space == "local":
            reads = [*reads, LOCAL]
        return Step(self.text, reads, values, run)

    def store(self, values, dtype, space, address, reads):
        # A register may be wider than the stored value, which is then its low part.
        sources = []
        for value in values:
            wide_type = dtype
            if value.startswith("%") and self.kernel.width(value) > 8 * dtype.itemsize:
                self.require(dtype.kind != "f")
                wide_type = np.dtype(dtype.kind + "8")
            source, names = self.operand(value, wide_type)
            sources.append(source)
            reads = [*reads, *names]

        def run(group):
            for part, source in enumerate(sources):
                group.store(space, address(group, part), source(group).astype(dtype, copy=False))

        writes = []
        if space == "local":
            reads, writes = [*reads, LOCAL], [LOCAL]
        return Step(self.text, reads, writes, run)
