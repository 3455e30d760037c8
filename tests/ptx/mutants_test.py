"""mutants_test.py NVCC: checks that changing a sign, a constant, an address or the bound of a guard in the
PTX of a kernel makes its test fail.

Changes one instruction at a time, of every kind below, in a kernel of either precision and at a place
drawn by chance. A change that leaves every bit of every result as it was, such as the sign of what is
then squared, is none; another place is drawn. Exits with 77 where there is no nvcc or no numpy, and
unless PISTONFIELD_LONG is set: it tests the test."""

import copy
import os
import random
import re
import sys
import tempfile

from prerequisites import nvcc_or_skip, skip

if not os.environ.get("PISTONFIELD_LONG"):
    skip("takes minutes (PISTONFIELD_LONG=1)")
nvcc = nvcc_or_skip(__doc__)

from cases import cases_of
from kernels import architectures, compiled_kernels, run
from launch import WrongRun
from ptx_text import UnknownPtx, read_instruction

SAME, MISSED = "no bit of any result changes", "NOT NOTICED"
FLOATS = r"(f32|f64)"

# Of the first block, which finds the number of a thread's point, if it has one.
FIRST = {
    "a guard's bound moved": (r"^setp\.ge\.([su]32)", r"setp.gt.\1"),
    "the guard's branch negated": (r"^@(%p\d+) bra", r"@!\1 bra"),
    "another index of the block": (r"%ctaid\.y", "%ctaid.z"),
    "another size of the grid": (r"%nctaid\.y", "%nctaid.x"),
}
# Of what every point runs.
BODY = {
    "a negation left out": (rf"^neg\.{FLOATS} ", r"mov.\1 "),
    "an addition made a subtraction": (rf"^add\.{FLOATS} (?!.*, 0[fd]0+$)", r"sub.\1 "),
    "a subtraction made an addition": (rf"^sub\.{FLOATS} ", r"add.\1 "),
    "a product made a sum": (rf"^mul\.{FLOATS} ", r"add.\1 "),
    "a root left out": (r"^sqrt\.(?:approx\.ftz|rn)\.f32 ", "mov.f32 "),
    "a reciprocal left out": (rf"^rcp\.(?:approx\.ftz|rn)\.{FLOATS} ", r"mov.\1 "),
    "a constant doubled or halved": (r"^((?:mul|add|fma\.rn)\.f\d+ .*\b0[fd][34B])F", r"\1E"),
    "a factor squared": (rf"^(mul|fma\.rn)\.{FLOATS} (%\w+), (%\w+), (?!\4)%\w+", r"\1.\2 \3, \4, \4"),
    "a choice's values exchanged": (rf"^selp\.{FLOATS} (%\w+), ([%\w]+), ([%\w]+),", r"selp.\1 \2, \4, \3,"),
    "a comparison reversed": (rf"^setp\.gt\.{FLOATS} ", r"setp.le.\1 "),
    "a result stored too far on": (r"^(st\.global\.\S+ \[%\w+)(?:\+\d+)?\]", r"\1+512]"),
    "a result stored too early": (r"^(st\.global\.\S+ \[%\w+)(?:\+\d+)?\]", r"\1+-16]"),
    "another node or weight": (r"^(ld\.const\.f\S+ %\w+, \[%\w+)(?:\+\d+)?\]", r"\1+8]"),
    "a step of a loop doubled": (r"^add\.s32 (%r\d+), \1, 1$", r"add.s32 \1, \1, 2"),
}


class Subject:
    """A kernel, what it computes, and the places that an ordinary point comes to."""

    def __init__(self, compiled):
        self.compiled, given = compiled, (compiled.kind.points, compiled.real == "f32")
        self.cases = cases_of(*given, every=5)
        self.pressures = run(compiled, self.cases, seed=1)[2]
        _, visits, _ = run(compiled, cases_of(*given, every=15, with_edges=False), seed=1)
        blocks = compiled.program.blocks[0]
        self.places = {False: [n for block, v in zip(blocks, visits) if v for n in block], True: blocks[0]}
        if compiled.real == "f64":  # the library's sine has digits that no bound sees
            sine = ("fma.rn.f32", "mul.f32", "mov.f32")
            self.places[False] = [n for n in self.places[False] if self.instruction(n).opcode not in sine]

    def instruction(self, place):
        return self.compiled.kernel.instructions[place]

    def verdict(self, place, text):
        """How a change shows: SAME if in no bit, MISSED if only within the bounds."""
        changed = copy.copy(self.compiled)
        changed.kernel = copy.copy(changed.kernel)
        changed.kernel.instructions = list(changed.kernel.instructions)
        changed.kernel.instructions[place] = read_instruction(text)
        try:
            changed.program = changed.compile(changed.kernel)
            errors, _, pressures = run(changed, self.cases, seed=1)
        except UnknownPtx:
            return SAME
        except WrongRun as problem:
            return str(problem)
        wrong = sum((e > case.expected.bound).any() for e, case in zip(errors, self.cases))
        if wrong:
            return f"{wrong} of {len(self.cases)} launches wrong"
        same = all(p.tobytes() == q.tobytes() for p, q in zip(pressures, self.pressures))
        return SAME if same else MISSED


def main(seed=17):
    chance, verdicts = random.Random(seed), []
    with tempfile.TemporaryDirectory() as folder:
        kernels = compiled_kernels(nvcc, architectures(nvcc)[:1], folder)
    subjects = [Subject(compiled) for compiled in kernels[::3]]
    for name, (pattern, replacement) in {**FIRST, **BODY}.items():
        found = [(subject, n) for subject in subjects for n in subject.places[name in FIRST]
                 if re.search(pattern, subject.instruction(n).text)]  # fmt: skip
        chance.shuffle(found)
        if not found:
            print(f"{name}: no kernel has such an instruction")
            verdicts.append(MISSED)
        for real in ("f32", "f64"):
            for subject, n in [entry for entry in found if entry[0].compiled.real == real][:5]:
                old = subject.instruction(n).text
                new = re.sub(pattern, replacement, old, count=1)
                verdicts.append(subject.verdict(n, new))
                print(f"{name}: {subject.compiled.title()}, {n}: {old} -> {new}\n    {verdicts[-1]}", flush=True)
                if verdicts[-1] != SAME:
                    break
    missed, same = verdicts.count(MISSED), verdicts.count(SAME)
    print(f"\n{len(verdicts) - same} changes, {missed} not noticed, and {same} without an effect")
    return missed > 0 or same > len(verdicts) / 4


sys.exit(main())
