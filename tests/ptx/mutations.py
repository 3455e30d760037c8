"""Changes to the text of one instruction, like those that a mistake in the sources or a compiler bug would
cause. Each kind is a function that returns the changed text of an instruction, or None if it does not
apply."""

import copy
import re

from ptx_text import read_instruction

FLOATS = r"f(?:32|64)"


def substituted(pattern, replacement):
    def mutate(text, _):
        changed, count = re.subn(pattern, replacement, text, count=1)
        return changed if count else None

    return mutate


def bit_flipped(text, chance):
    """Changes a constant's sign, exponent or one of the first bits of its fraction."""
    found = re.match(r"((?:mov|mul|add|fma\.rn)\.f\d+ .*)\b0([fd])([0-9A-F]+)(.*)$", text)
    if not found or int(found.group(3), 16) == 0:
        return None
    digits = found.group(3)
    first = {"f": 20, "d": 49}[found.group(2)]
    flipped = int(digits, 16) ^ 1 << chance.randrange(first, 4 * len(digits))
    return f"{found.group(1)}0{found.group(2)}{flipped:0{len(digits)}X}{found.group(4)}"


def squared(text, _):
    """Uses the first factor instead of the second."""
    found = re.match(rf"((?:mul|fma\.rn)\.{FLOATS} %\w+, )(%\w+), (%\w+)(.*)$", text)
    if not found or found.group(2) == found.group(3):
        return None
    return f"{found.group(1)}{found.group(2)}, {found.group(2)}{found.group(4)}"


def swapped(pattern):
    """Swaps the operands that match the groups b and c of the pattern."""

    def mutate(text, _):
        found = re.match(pattern, text)
        if not found or found.group("b") == found.group("c"):
            return None
        return f"{found.group('a')}{found.group('c')}, {found.group('b')}{found.group('d')}"

    return mutate


def parameter_before(text, _):
    found = re.match(r"(ld\.param\.f\d+ .*_param_)(\d+)\]$", text)
    return found and f"{found.group(1)}{int(found.group(2)) - 1}]"


def guard_moved(text, _):
    """Changes the number of points by one."""
    after = {"lt": "le", "le": "lt", "gt": "ge", "ge": "gt"}
    found = re.match(r"setp\.(lt|le|gt|ge)\.([su]32 .*)$", text)
    return found and f"setp.{after[found.group(1)]}.{found.group(2)}"


def integers_compared_otherwise(text, _):
    after = {"lt": "ge", "ge": "lt", "le": "gt", "gt": "le", "eq": "ne", "ne": "eq"}
    found = re.match(r"setp\.(\w\w)\.([bsu]32 .*)$", text)
    return found and f"setp.{after[found.group(1)]}.{found.group(2)}"


# Changes in the first block, which computes the number of a thread's point, if it has one.
FIRST_KINDS = {
    "a guard's bound moved": guard_moved,
    "the guard's branch negated": substituted(r"^@(%p\d+) bra", r"@!\1 bra"),
    "another index of the block": substituted(r"%ctaid\.y", "%ctaid.z"),
    "another size of the grid": substituted(r"%nctaid\.y", "%nctaid.x"),
    "a parameter for the one before": parameter_before,
}

# Changes in the computation of the point's position.
PLACE_KINDS = {
    "a coordinate's sign kept": substituted(rf"^abs\.({FLOATS}) ", r"mov.\1 "),
    "an element read too far on": substituted(
        rf"^(ld\.global\.{FLOATS} %\w+, \[%\w+)(?:\+\d+)?\]", r"\1+64]"
    ),
}

# Changes in the arithmetic of every point.
BODY_KINDS = {
    "a negation left out": substituted(rf"^neg\.({FLOATS}) ", r"mov.\1 "),
    "an addition made a subtraction": substituted(rf"^add\.({FLOATS}) (?!.*, 0[fd]0+$)", r"sub.\1 "),
    "a subtraction made an addition": substituted(rf"^sub\.({FLOATS}) ", r"add.\1 "),
    "a product made a sum": substituted(rf"^mul\.({FLOATS}) ", r"add.\1 "),
    "a root left out": substituted(r"^sqrt\.(?:approx\.ftz|rn)\.f32 ", "mov.f32 "),
    "a reciprocal left out": substituted(rf"^rcp\.(?:approx\.ftz|rn)\.({FLOATS}) ", r"mov.\1 "),
    "a constant's bit flipped": bit_flipped,
    "a factor squared": squared,
    "a factor and a summand exchanged": swapped(
        rf"(?P<a>fma\.rn\.{FLOATS} %\w+, %\w+, )(?P<b>%\w+), (?P<c>%\w+)(?P<d>)$"
    ),
    "a choice's values exchanged": swapped(
        rf"(?P<a>selp\.{FLOATS} %\w+, )(?P<b>[%\w]+), (?P<c>[%\w]+)(?P<d>, %p\d+)$"
    ),
    "a comparison of integers reversed": integers_compared_otherwise,
    "a comparison reversed": substituted(rf"^setp\.gt\.({FLOATS}) ", r"setp.le.\1 "),
    "a result stored too far on": substituted(r"^(st\.global\.\S+ \[%\w+)(?:\+\d+)?\]", r"\1+512]"),
    "a result stored too early": substituted(r"^(st\.global\.\S+ \[%\w+)(?:\+\d+)?\]", r"\1+-16]"),
    "another node or weight": substituted(r"^(ld\.const\.f\S+ %\w+, \[%\w+)(?:\+\d+)?\]", r"\1+8]"),
    "a step of a loop doubled": substituted(r"^add\.s32 (%r\d+), \1, 1$", r"add.s32 \1, \1, 2"),
    "an address's factor doubled": substituted(r"^(shl\.b64 %rd\d+, %rd\d+), (3|4)$", r"\1, 5"),
}


def mutants(kernel, places, mutate, chance):
    """The places where a kind of change applies, in random order, as (place, changed text)."""
    changes = [(place, mutate(kernel.instructions[place].text, chance)) for place in places]
    found = [(place, text) for place, text in changes if text and text != kernel.instructions[place].text]
    chance.shuffle(found)
    return found


def changed_kernel(kernel, place, text):
    changed = copy.copy(kernel)
    changed.instructions = list(kernel.instructions)
    changed.instructions[place] = read_instruction(text)
    # The compiler recomputes the magnitude of a coordinate at each use, and a change of sign in only one of
    # them may have no effect: the sum over the two edges along y is even in x.
    old = kernel.instructions[place]
    if old.opcode.startswith("abs."):
        for n, other in enumerate(kernel.instructions):
            if other.opcode == old.opcode and other.operands[1:] == old.operands[1:]:
                changed.instructions[n] = read_instruction(other.text.replace("abs.", "mov.", 1))
    return changed
