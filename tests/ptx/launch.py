"""Runs launches of a kernel: every thread of every block of their grids. It executes one basic block of the
program at a time, for all threads that have reached it."""

from dataclasses import dataclass

import numpy as np

from instructions import LOCAL, Decoder
from memory import BadAccess

BASE = 0x7F0000000000


@dataclass
class Shape:
    """A launch's three-dimensional grid of blocks and one-dimensional block of threads."""

    grid: tuple
    block: int = 128


class Program:
    """A kernel's steps, cut into basic blocks, and the registers that are live at the start of each block."""

    def __init__(self, kernel, symbols):
        decoder = Decoder(kernel, symbols)
        self.kernel, self.local, self.steps = kernel, decoder.local, []
        labelled = set(kernel.labels.values())
        for n, instruction in enumerate(kernel.instructions):
            if n in labelled:
                decoder.forget_products()
            self.steps.append(decoder.step(instruction))
        starts = {0, *labelled}
        starts |= {n + 1 for n, step in enumerate(self.steps) if step.target or step.ends}
        self.starts = sorted(start for start in starts if start < len(self.steps))
        self.end = dict(zip(self.starts, [*self.starts[1:], len(self.steps)]))
        self.wanted = self.find_wanted()

    def next_starts(self, start):
        last = self.steps[self.end[start] - 1]
        following = [self.kernel.labels[last.target]] if last.target else []
        return following if last.ends else [*following, self.end[start]]

    def find_wanted(self):
        reads, writes = {}, {}
        for start in self.starts:
            reads[start], writes[start] = set(), set()
            for step in self.steps[start : self.end[start]]:
                reads[start] |= set(step.reads) - writes[start]
                writes[start] |= set(step.writes)
        wanted, changed = dict(reads), True
        while changed:
            changed = False
            for start in reversed(self.starts):
                after = set().union(*(wanted[n] for n in self.next_starts(start)))
                new = reads[start] | (after - writes[start])
                changed |= new != wanted[start]
                wanted[start] = new
        return wanted


NO_THREAD, ALL_THREADS = np.array([False]), np.array([True])


class Group:
    """Threads that are at the same instruction, and their registers. Registers that only some of the threads
    have written are kept in `partly`, together with a mask of these threads, so that reading one fails: it is
    not in `registers`."""

    def __init__(self, launches, threads, registers):
        self.launches, self.threads, self.registers, self.partly = launches, threads, registers, {}
        self.launch = launches.launch_of[threads]

    def state(self, name):
        """A register's values, or None if it has none, and the mask of the threads that have written it."""
        if name in self.registers:
            return self.registers[name], ALL_THREADS
        return self.partly.get(name, (None, NO_THREAD))

    def put(self, name, values, written):
        if written.all():
            self.registers[name] = values
        elif written.any():
            self.partly[name] = self.spread(values), written

    def write_some(self, mask, name, values):
        old, written = self.state(name)
        new = np.array(self.spread(values[:1] if old is None else old))
        new[mask] = values.view(new.dtype)
        self.put(name, new, written | mask)

    def part(self, mask, names):
        registers = {name: self.registers[name] for name in names if name in self.registers}
        kept = {name: v if len(v) == 1 else v[mask] for name, v in registers.items()}
        part = Group(self.launches, self.threads[mask], kept)
        for name in (self.partly.keys() & names) - self.registers.keys():
            part.put(name, *(values[mask] for values in self.partly[name]))
        return part

    def joined(self, other, names):
        threads = np.concatenate([self.threads, other.threads])
        joined = Group(self.launches, threads, {})
        for name in names:
            (mine, written), (others, others_written) = self.state(name), other.state(name)
            if mine is None and others is None:
                continue
            mine = others[:1] if mine is None else mine
            others = mine[:1] if others is None else others
            joined.put(name, self.join(mine, others, other), self.join(written, others_written, other))
        return joined

    def join(self, mine, others, other):
        others = others.view(mine.dtype)
        if mine.ndim == 1 and len(mine) == len(others) == 1 and mine.tobytes() == others.tobytes():
            return mine
        return np.concatenate([self.spread(mine), other.spread(others)])

    def spread(self, value):
        return np.broadcast_to(value, (len(self.threads), *value.shape[1:]))

    def ways_off(self):
        launches = self.launches
        chance = launches.chance.integers(-1, 2, len(self.threads), np.int32)
        return chance * launches.is_off[self.launch]

    def fuses(self):
        launches = self.launches
        chance = launches.chance.integers(0, 2, len(self.threads), bool)
        return chance & (launches.is_off[self.launch] == 1)

    def load_parameter(self, target, name, dtype):
        self.registers[target] = self.launches.parameters[name].view(dtype)[self.launch]

    def load(self, space, address, dtype):
        if space == "local":
            return self.launches.program.local.load(self.registers[LOCAL], self.spread(address), dtype)
        if space == "const":
            return self.launches.constants.load(self.spread(address), dtype, self.launch)
        self.launches.works[self.threads] = True
        return self.launches.memory.load(self.spread(address), dtype, self.launch)

    def store(self, space, address, value):
        address, value = self.spread(address), self.spread(value)
        if space == "local":
            self.launches.program.local.store(self.registers[LOCAL], address, value)
            return
        self.launches.works[self.threads] = True
        self.launches.memory.store(address, value, self.launch)


class EndlessRun(Exception):
    pass


class Launches:
    """Launches of one kernel, which are run together.

    `shapes`, `arguments` and `is_off` have one element per launch. If `is_off` is set, approximate roots and
    reciprocals are, at random, off by as much as PTX allows, and sums of products are fused at random.
    Arguments are numbers or addresses from `memory`."""

    def __init__(self, program, memory, constants, shapes, arguments, is_off, seed):
        self.program, self.memory, self.constants = program, memory, constants
        self.is_off, self.chance = np.array(is_off, np.int32), np.random.default_rng(seed)
        self.parameters = {}
        for n, (type_name, name) in enumerate(program.kernel.parameters):
            dtype = np.dtype(type_name[0].replace("s", "i") + str(int(type_name[1:]) // 8))
            self.parameters[name] = np.array([values[n] for values in arguments], dtype)
        self.place_threads(shapes)
        self.works = np.zeros(len(self.launch_of), bool)  # which threads have used global memory

    def place_threads(self, shapes):
        pieces = {name: [] for name in ("%tid.x", "%ctaid.x", "%ctaid.y", "%ctaid.z")}
        sizes, launch_of, numbers = [], [], []
        for launch, shape in enumerate(shapes):
            gx, gy, gz = shape.grid
            number = np.arange(gx * gy * gz * shape.block, dtype=np.int64)
            block = number // shape.block
            pieces["%tid.x"].append(number % shape.block)
            pieces["%ctaid.x"].append(block % gx)
            pieces["%ctaid.y"].append(block // gx % gy)
            pieces["%ctaid.z"].append(block // gx // gy)
            launch_of.append(np.full(len(number), launch, np.int32))
            numbers.append(number)
            sizes.append((shape.block, gx, gy, gz))
        self.launch_of, self.number = np.concatenate(launch_of), np.concatenate(numbers)
        self.special = {name: np.concatenate(v).astype(np.uint32) for name, v in pieces.items()}
        sizes = np.array(sizes, np.uint32)[self.launch_of]
        for n, name in enumerate(("%ntid.x", "%nctaid.x", "%nctaid.y", "%nctaid.z")):
            self.special[name] = np.ascontiguousarray(sizes[:, n])

    def run(self, most_blocks=10**9):
        """Runs all threads to their end. Returns the number of threads that reached each basic block."""
        program = self.program
        first = Group(self, np.arange(len(self.launch_of)), dict(self.special))
        if program.kernel.local:
            first.registers[LOCAL] = program.local.rows(len(first.threads))
        waiting, visits, blocks = {0: first}, dict.fromkeys(program.starts, 0), 0
        with np.errstate(all="ignore"):
            while waiting:
                start = min(waiting)
                group = waiting.pop(start)
                visits[start] += len(group.threads)
                blocks += 1
                if blocks > most_blocks:
                    raise EndlessRun(f"more than {most_blocks} basic blocks")
                try:
                    self.run_block(start, group, waiting)
                except KeyError as register:
                    raise BadAccess(f"{register} is read before it is written") from None
        self.blocks = blocks
        return visits

    def run_block(self, start, group, waiting):
        program = self.program
        end = program.end[start]
        for step in program.steps[start : end - 1]:
            step.run(group)
        last = program.steps[end - 1]
        if not last.target:
            if not last.ends:
                last.run(group)
                self.wait(waiting, end, group)
            return
        target = program.kernel.labels[last.target]
        taken = last.run(group) if last.run else np.array([True])
        if taken.all():
            self.wait(waiting, target, group)
        elif not taken.any():
            self.wait(waiting, end, group)
        else:
            self.wait(waiting, target, group.part(taken, program.wanted[target]))
            self.wait(waiting, end, group.part(~taken, program.wanted[end]))

    def wait(self, waiting, start, group):
        if start in waiting:
            group = waiting[start].joined(group, self.program.wanted[start])
        waiting[start] = group
