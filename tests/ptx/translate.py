"""Kernels in PTX as functions in C++, by the PTX manual. Only instructions whose opcode, modifiers
included, stands here are known."""

import re

from ptx_text import UnknownPtx

WIDTH = {"pred": 1, **{f"{kind}{bits}": bits for kind in "bsuf" for bits in (32, 64)},
         **{f"{kind}{bits}": bits for kind in "bsu" for bits in (8, 16)}}  # fmt: skip
OPERATIONS = {}  # by opcode: the types of the operands, the result first, and the result in C++


def define(opcode, types, expression):
    OPERATIONS[opcode] = types.split(), expression


ORDER = {"lt": "a < b", "le": "a <= b", "gt": "a > b", "ge": "a >= b"}
# Comparisons of a NaN are false, but those with a u true.
FLOAT_ORDER = {**ORDER, "eq": "a == b", "ne": "a < b || a > b"}
OPPOSITE = {"lt": "ge", "le": "gt", "gt": "le", "ge": "lt", "eq": "ne", "ne": "eq"}

for t in ("f32", "f64"):
    for suffix in (t, f"rn.{t}"):
        for name, sign in (("add", "+"), ("sub", "-"), ("mul", "*")):
            define(f"{name}.{suffix}", f"{t} {t} {t}", f"a {sign} b")
    define(f"max.{t}", f"{t} {t} {t}", "std::fmax(a, b)")  # of a NaN and a number, the number
    define(f"min.{t}", f"{t} {t} {t}", "std::fmin(a, b)")
    define(f"neg.{t}", f"{t} {t}", "-a")
    define(f"abs.{t}", f"{t} {t}", "std::fabs(a)")
    define(f"sqrt.rn.{t}", f"{t} {t}", "std::sqrt(a)")
    define(f"rcp.rn.{t}", f"{t} {t}", "1 / a")
    define(f"div.rn.{t}", f"{t} {t} {t}", "a / b")
    define(f"fma.rn.{t}", f"{t} {t} {t} {t}", "std::fma(a, b, c)")
    for name, order in FLOAT_ORDER.items():
        define(f"setp.{name}.{t}", f"pred {t} {t}", order)
        define(f"setp.{name}u.{t}", f"pred {t} {t}", f"!({FLOAT_ORDER[OPPOSITE[name]]})")
for bits in ("32", "64"):
    for t in (f"s{bits}", f"u{bits}"):
        for name, result in (("add", "a + b"), ("sub", "a - b"), ("mul.lo", "a * b"),
                             ("min", "a < b ? a : b"), ("max", "a > b ? a : b")):  # fmt: skip
            define(f"{name}.{t}", f"{t} {t} {t}", result)
        define(f"mad.lo.{t}", f"{t} {t} {t} {t}", "a * b + c")
        define(f"shr.{t}", f"{t} {t} u32", "shiftRight(a, b)")
        for name, order in ORDER.items():
            define(f"setp.{name}.{t}", f"pred {t} {t}", order)
    define(f"neg.s{bits}", f"s{bits} s{bits}", "-a")
    define(f"shl.b{bits}", f"u{bits} u{bits} u32", "shiftLeft(a, b)")
    define(f"shr.b{bits}", f"u{bits} u{bits} u32", "shiftRight(a, b)")
    for kind in "bsu":
        define(f"setp.eq.{kind}{bits}", f"pred b{bits} b{bits}", "a == b")
        define(f"setp.ne.{kind}{bits}", f"pred b{bits} b{bits}", "a != b")
for kind in "bsu":
    define(f"setp.eq.{kind}16", "pred b16 b16", "a == b")
    define(f"setp.ne.{kind}16", "pred b16 b16", "a != b")
for t in ("pred", "b16", "b32", "b64"):
    for name, sign in (("and", "&"), ("or", "|"), ("xor", "^")):
        define(f"{name}.{t}", f"{t} {t} {t}", f"a {sign} b")
    define(f"not.{t}", f"{t} {t}", "!a" if t == "pred" else "~a")
for t in (t for t, width in WIDTH.items() if width != 8):  # which no register has
    define(f"mov.{t}", f"{t} {t}", "a")
    if t != "pred":
        define(f"selp.{t}", f"{t} {t} {t} pred", "c ? a : b")
for kind in "su":
    define(f"mul.wide.{kind}32", f"{kind}64 {kind}32 {kind}32", f"{kind}64{{a}} * b")
    define(f"mad.wide.{kind}32", f"{kind}64 {kind}32 {kind}32 {kind}64", f"{kind}64{{a}} * b + c")
define("div.s32", "s32 s32 s32", "s64{a} / divisor(b)")
define("rem.s32", "s32 s32 s32", "s64{a} % divisor(b)")
define("bfi.b64", "b64 b64 b64 u32 u32", "insertBits(a, b, c, d)")
define("bfe.u32", "u32 u32 u32 u32", "extractBits(a, b, c)")
define("shf.l.wrap.b32", "b32 b32 b32 u32", "funnelLeft(a, b, c)")
for to, of in (
    ("rn.f32", "f64"), ("f64", "f32"), ("rn.f32", "s32"), ("rn.f32", "u32"), ("rn.f64", "s32"),
    ("rn.f64", "u32"), ("rn.f64", "s64"), ("rn.f32", "s64"), ("u64", "u32"), ("s64", "s32"),
    ("u32", "u64"), ("s32", "s64"), ("u32", "u16"), ("u16", "u32"),
):  # fmt: skip
    define(f"cvt.{to}.{of}", f"{to.removeprefix('rn.')} {of}", "a")
define("cvt.rni.s32.f32", "s32 f32", "toS32(std::nearbyint(a))")
define("cvt.rzi.s32.f32", "s32 f32", "toS32(std::trunc(a))")
define("cvt.rzi.s32.f64", "s32 f64", "toS32(std::trunc(a))")
define("cvt.s32.s8", "s32 b32", "static_cast<s8>(a)")
define("cvta.to.global.u64", "u64 u64", "a")  # addresses of global memory are their own
define("cvta.local.u64", "u64 u64", "a + LOCAL")
# Right to a unit in the last place or so, and made to be off by as much.
define("sqrt.approx.ftz.f32", "f32 f32", "sqrtApprox(a, thread.wayOff())")
define("rcp.approx.ftz.f32", "f32 f32", "rcpApprox(a, thread.wayOff())")

SPECIAL = {"%tid.x": "thread.tid()", "%ntid.x": "launch.block"}
for axis in "XYZ":
    SPECIAL[f"%ctaid.{axis.lower()}"] = f"thread.ctaid{axis}()"
    SPECIAL[f"%nctaid.{axis.lower()}"] = f"launch.grid{axis}"
ACCESS = re.compile(r"(ld|st)(?:\.(param|const|global|global\.nc|local))?(?:\.v([24]))?\.([bsu](?:8|16)|[bsuf](?:32|64))$")
ADDRESS = re.compile(r"\[([%\w$]+)(?:\+(-?\d+))?\]$")


def cpp(type_name):
    return "bool" if type_name == "pred" else type_name.replace("b", "u")


class Translator:
    """`symbols` are addresses by name. `code` is the function `name` of the kernel; `blocks` are its
    basic blocks, as ranges of instructions."""

    def __init__(self, kernel, symbols, name="kernel"):
        self.kernel, self.symbols = kernel, dict(symbols)
        self.local = []  # the state of each byte of local memory, with margins between the arrays
        for array, size in kernel.local.items():
            self.symbols[array] = len(self.local)
            self.local += [1] * size + [0] * (16 + -size % 16)
        labelled = set(kernel.labels.values())
        ends = {n + 1 for n, i in enumerate(kernel.instructions) if i.opcode.startswith(("bra", "ret"))}
        starts = sorted(n for n in {0, *labelled, *ends} if n < len(kernel.instructions))
        self.blocks = [range(*pair) for pair in zip(starts, [*starts[1:], len(kernel.instructions)])]
        self.products, self.registers, lines = {}, {}, []
        for n, block in enumerate(self.blocks):
            self.sure = set()  # registers that the thread has written when it comes here
            if block.start in labelled:
                self.products = {}  # threads may come from elsewhere
            lines.append(f"at{block.start}: thread.visit(visits[{n}]);")
            lines += [self.statement(kernel.instructions[place]) for place in block]
        registers = " ".join(f"{bits} {name}; bool has{name} = false;" for name, bits in self.registers.items())
        body = "\n  ".join(line for line in [registers, *lines])
        states = ", ".join(f"0, {state}" for state in self.local) or "0"
        self.code = f"""
static void {name}_thread(Thread& thread, u64* visits) {{
  [[maybe_unused]] const Launch& launch = thread.launch;
  {body}
}}
extern "C" const char* {name}(const Launch& launch, u64* visits) {{
  static const u8 fresh[] = {{{states}}};
  u8 local[sizeof fresh];
  return runThreads(launch, visits, local, fresh, {len(self.local)}, {name}_thread);
}}
"""

    def require(self, condition):
        if not condition:
            raise UnknownPtx(self.text)

    def statement(self, instruction):
        self.text = instruction.text
        opcode, operands, guard = instruction.opcode, instruction.operands, instruction.guard
        sure = set(self.sure)
        if opcode == "ret":
            self.require(not guard and not operands)
            code, written = "return;", []
        elif opcode in ("bra", "bra.uni"):
            self.require(len(operands) == 1 and operands[0] in self.kernel.labels)
            code, written = f"goto at{self.kernel.labels[operands[0]]};", []
        elif opcode in OPERATIONS:
            code, written = self.operation(opcode, operands)
        elif ACCESS.match(opcode):
            code, written = self.access(operands, *ACCESS.match(opcode).groups())
        else:
            raise UnknownPtx(self.text)
        self.products = {product: factors for product, factors in self.products.items()
                         if not {product, *factors} & set(written)}  # fmt: skip
        if opcode in ("mul.f32", "mul.f64") and not guard and operands[0] not in operands[1:]:
            self.products[operands[0]] = operands[1:]
        if guard:
            self.sure = sure
            code = f"if ({'!' if instruction.guard_negated else ''}{self.read(guard, 'pred')}) {{ {code} }}"
        return code

    def name(self, register, width):
        """The variable of a register, which must be that wide."""
        self.require(register.startswith("%") and self.kernel.width(register) == width)
        name = re.sub(r"\W", "_", register)
        self.registers[name] = "bool" if width == 1 else f"u{width}"
        return name

    def read(self, operand, type_name):
        """An operand in C++, as of a type."""
        to, width = cpp(type_name), WIDTH[type_name]
        if operand in SPECIAL:
            self.require(width == 32)
            return f"as<{to}>(u32({SPECIAL[operand]}))"
        if operand.startswith("%"):
            name = self.name(operand, width)
            if name in self.sure:
                return f"as<{to}>({name})"
            self.sure.add(name)
            return f'as<{to}>((require(has{name}, "a register is read before it is written"), {name}))'
        if operand in self.symbols:
            self.require(width == 64)
            return f"as<{to}>(u64{{{self.symbols[operand]}}})"
        if width == 1:  # a predicate is true if any bit is set
            self.require(operand in ("0", "-1"))
            return "false" if operand == "0" else "true"
        bits = re.fullmatch(r"0([fd])([0-9A-Fa-f]+)", operand)
        if bits:
            self.require(len(bits.group(2)) == {"f": 8, "d": 16}[bits.group(1)] == width // 4)
            return f"as<{to}>(u{width}{{0x{bits.group(2)}u}})"
        self.require(re.fullmatch(r"-?(\d+|0[xX][0-9A-Fa-f]+)", operand) and type_name[0] != "f")
        return f"as<{to}>(u{width}{{{int(operand, 0) % (1 << width)}u}})"

    def write(self, register, type_name, value):
        name = self.name(register, WIDTH[type_name])
        self.sure.add(name)
        return f"{name} = as<{self.registers[name]}>({value}), has{name} = true;"

    def operation(self, opcode, operands):
        types, result = OPERATIONS[opcode]
        self.require(len(operands) == len(types))
        target, *sources = operands
        values = [f"const {cpp(t)} {letter} = {self.read(operand, t)};"
                  for letter, operand, t in zip("abcd", sources, types[1:])]  # fmt: skip
        result = f"static_cast<{cpp(types[0])}>({result})"
        if opcode in ("add.f32", "add.f64", "sub.f32", "sub.f64"):
            result = self.perhaps_fused(result, "-" if opcode[0] == "s" else "", sources, types[0])
        return f"{{ {' '.join(values)} {self.write(target, types[0], result)} }}", [target]

    def perhaps_fused(self, result, sign, summands, type_name):
        """A sum or difference that, by chance, is computed from a product that was not rounded, as ptxas
        may do unless a rounding is asked for."""
        for name, other, signs in ((summands[0], "b", ("", sign)), (summands[1], "a", (sign, ""))):
            if name in self.products:
                first, second = (self.read(factor, type_name) for factor in self.products[name])
                fused = f"std::fma({signs[0]}{first}, {second}, {signs[1]}{other})"
                return f"thread.fuses() ? {fused} : {result}"
        return result

    def access(self, operands, what, space, count, type_name):
        self.require(len(operands) == 2)
        values, place = operands if what == "ld" else reversed(operands)
        values = values.strip("{}").replace(",", " ").split()
        found = ADDRESS.match(place)
        self.require(len(values) == int(count or 1) and found)
        base, offset = found.group(1), int(found.group(2) or 0)
        to = cpp(type_name)
        if space == "param":
            names = [name for _, name in self.kernel.parameters]
            self.require(what == "ld" and not count and not offset and base in names)
            number = names.index(base)
            self.require(self.kernel.parameters[number][0][1:] == type_name[1:])
            return self.write(values[0], type_name, f"thread.parameter<{to}>({number})"), values
        size = WIDTH[type_name] // 8
        code = [f"const u64 address = {self.read(base, 'u64')} + u64{{{offset % (1 << 64)}u}};",
                f"align(address, {size * len(values)});"]  # fmt: skip
        for n, value in enumerate(values):
            # A register may be wider than what is loaded or stored, which is its low part.
            wide = type_name
            if value.startswith("%") and self.kernel.width(value) > WIDTH[type_name]:
                self.require(type_name[0] != "f")
                wide = f"{type_name[0]}{self.kernel.width(value)}"
            # Without a space, the address says whether the memory is local.
            kind = {"local": "Local", None: "Any"}.get(space, "")
            at = f"address + {n * size}" + (f", {len(self.local)}" if kind else "")
            if what == "ld":
                constant = "" if kind else f", {str(space == 'const').lower()}"
                code.append(self.write(value, wide, f"static_cast<{cpp(wide)}>(thread.load{kind}<{to}>({at}{constant}))"))
            else:
                self.require(space in ("global", "local", None))
                code.append(f"thread.store{kind}<{to}>({at}, static_cast<{to}>({self.read(value, wide)}));")
        return f"{{ {' '.join(code)} }}", values if what == "ld" else []
