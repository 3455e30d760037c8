"""mutants_test.py NVCC: checks that changing a sign, a constant, an address or the bound of a guard in the
PTX of a kernel makes its test fail.

Makes one change at a time, of every kind in mutations.py, in a random kernel and at a random place. A change that
leaves every bit of every result the same, such as that of the sign of a number that is then squared, does not count,
and another place is drawn. Exits with 77 without nvcc or numpy, or if PISTONFIELD_LONG is not set, since it only tests
the test."""

import copy
import os
import random
import sys
import tempfile
import time

from prerequisites import nvcc_or_skip, skip

if not os.environ.get("PISTONFIELD_LONG"):
    skip("takes half a minute (PISTONFIELD_LONG=1)")
nvcc = nvcc_or_skip(__doc__)

import numpy as np

from cases import cases_of
from kernels import WrongRun, architectures, compiled_kernels, run
from instructions import Decoder
from launch import EndlessRun
from memory import BadAccess
from mutations import BODY_KINDS, FIRST_KINDS, PLACE_KINDS, changed_kernel, mutants
from ptx_text import UnknownPtx, read_instruction

SINE = ("fma.rn.f32", "mul.f32", "mov.f32")
SAME = "no bit of any result changes"
FEWER = {"orders": (2, 10, 17), "every": 15}


class Subject:
    """A kernel, and the parts of it that an ordinary point executes."""

    def __init__(self, compiled):
        self.compiled = compiled
        self.given = compiled.kind.points, compiled.real == "f32"
        _, launches, visits = run(compiled, cases_of(*self.given, **FEWER, with_edges=False), seed=1)
        end = launches.program.end
        ordinary = [place for start in visits if visits[start] for place in range(start, end[start])]
        first, second = (range(start, end[start]) for start in launches.program.starts[:2])
        magnitudes = [n for n in second if compiled.kernel.instructions[n].opcode.startswith("abs.")]
        place = range(second.start, magnitudes[1] + 1)  # ends with |x| and |y|
        if compiled.real == "f64":  # changes in the last digits of the library's sine are within the bounds
            ordinary = [n for n in ordinary if compiled.kernel.instructions[n].opcode not in SINE]
        self.places = {"first": first, "place": place, "body": ordinary}
        self.symbols = dict.fromkeys([*compiled.module.constants, *compiled.module.variables], 0)
        self.blocks = run(compiled, cases_of(*self.given, **FEWER), seed=1)[1].blocks

    def is_valid(self, place, text):
        try:
            Decoder(self.compiled.kernel, self.symbols).step(read_instruction(text))
        except UnknownPtx:
            return False
        return True

    def changed(self, place, text):
        compiled = copy.copy(self.compiled)
        compiled.kernel = changed_kernel(compiled.kernel, place, text)
        return compiled

    def verdict(self, place, text):
        """The effect of a change: SAME if no bit changes, NOT NOTICED if the results stay within the
        bounds."""
        for cases in (cases_of(*self.given, **FEWER), cases_of(*self.given)):
            try:
                changed = run(self.changed(place, text), cases, seed=1, most_blocks=20 * self.blocks)
            except (BadAccess, WrongRun, EndlessRun, ArithmeticError) as problem:
                return str(problem)
            wrong = sum((e > case.expected.bound).any() for e, case in zip(changed[0], cases))
            if wrong:
                return f"{wrong} of {len(cases)} launches wrong"
        words = (result[1].memory.words for result in (changed, run(self.compiled, cases, seed=1)))
        return SAME if np.array_equal(*words) else "NOT NOTICED"


def draw(subjects, part, mutate, chance):
    """Kernels and changes of them that are still valid PTX, in random order."""
    for subject in chance.sample(subjects, len(subjects)):
        for place, text in mutants(subject.compiled.kernel, subject.places[part], mutate, chance)[:5]:
            if subject.is_valid(place, text):
                yield subject, place, text


KINDS = {"first": FIRST_KINDS, "place": PLACE_KINDS, "body": BODY_KINDS}


def main(architecture=0, count=1, seed=17):
    start = time.monotonic()
    chance = random.Random(seed)
    with tempfile.TemporaryDirectory() as folder:
        chosen = [architectures(nvcc)[architecture]]
        subjects = [Subject(compiled) for compiled in compiled_kernels(nvcc, chosen, folder)]
    verdicts = []
    for part, kinds in KINDS.items():
        for name, mutate in kinds.items():
            before = len(verdicts)
            for real in ("f32", "f64") * count:  # not every kind of change applies to both
                of_real = [subject for subject in subjects if subject.compiled.real == real]
                for subject, place, text in draw(of_real, part, mutate, chance):
                    verdicts.append(subject.verdict(place, text))
                    print(f"{name}: {subject.compiled.title()}, {place}: "
                          f"{subject.compiled.kernel.instructions[place].text} -> {text}\n"
                          f"    {verdicts[-1]}", flush=True)  # fmt: skip
                    if verdicts[-1] != SAME:
                        break
            if len(verdicts) == before:
                print(f"{name}: no kernel has such an instruction")
                verdicts.append("NOT NOTICED")
    missed, same = verdicts.count("NOT NOTICED"), verdicts.count(SAME)
    print(f"\n{len(verdicts) - same} changes, {missed} not noticed, and {same} without an effect; "
          f"{time.monotonic() - start:.0f} s")  # fmt: skip
    return missed > 0 or same > len(verdicts) / 10


sys.exit(main())
