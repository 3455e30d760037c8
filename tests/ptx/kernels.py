"""The twelve kernels with their parameters, and launches of them with the launchers' shapes."""

import subprocess
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

import numpy as np

import ptx_text
from launch import BASE, Launches, Program, Shape
from memory import EVERYBODY, ConstantMemory, Memory
from reference import rule

SIZES, TABLE = ["u32"] * 3, ["u64"]


@dataclass
class Kind:
    """A kernel's name, whether its results are pairs or two arrays, and how its arguments give the points."""

    name: str
    results: str
    points: str


def kinds(real):
    def parameters(results, points, reals):
        return (*["u64"] * results, *points, *[real] * reals)

    found = {
        parameters(1, SIZES, 6): Kind("calculate", "pairs", "steps"),
        parameters(1, SIZES, 15): Kind("calculate_grid", "pairs", "map"),
        parameters(2, SIZES, 15): Kind("calculate_grid", "parts", "map"),
        parameters(1, SIZES + TABLE, 3): Kind("calculate_grid", "pairs", "map in memory"),
        parameters(2, SIZES + TABLE, 3): Kind("calculate_grid", "parts", "map in memory"),
    }
    if real == "f32":
        found[parameters(1, ["u32", "u64"], 3)] = Kind("calculate_grid_unstructured", "pairs", "list")
        found[parameters(1, SIZES + 3 * TABLE, 3)] = Kind("calculate_grid_structured", "pairs", "axes")
    return found


PRECISIONS = {  # source file: real type, its numpy type, prefix of the tables
    "RectangularPistonCuda.cu": ("f32", np.float32, "global_RectangularPiston_float_"),
    "RectangularPistonCuda.dp.cu": ("f64", np.float64, "global_dpRectangularPiston_double_"),
}


class Compiled:
    """One kernel of one PTX file, as nvcc wrote it or with one changed instruction."""

    def __init__(self, source, architecture, module, kernel):
        self.real, self.dtype, self.tables = PRECISIONS[source]
        self.architecture, self.module, self.kernel = architecture, module, kernel
        types = tuple(type_name for type_name, _ in kernel.parameters)
        known = kinds(self.real)
        if types not in known or known[types].name not in kernel.name:
            raise ptx_text.UnknownPtx(f"{kernel.name} with parameters {' '.join(types)}")
        self.kind = known[types]

    def title(self):
        kind, precision = self.kind, {"f32": "single", "f64": "double"}[self.real]
        return f"{precision} {kind.name} ({kind.points}, {kind.results})"


def compile_ptx(nvcc, source, architecture, folder):
    ptx = folder / f"{source}.{architecture}.ptx"
    sources = Path(__file__).resolve().parents[2] / "src"
    subprocess.run([nvcc, "-ptx", "-std=c++17", "-O3", f"-arch={architecture}", "-I", sources,
                    "-DPISTONFIELD_DOUBLE=1", "-o", ptx, sources / "FastNearfield" / source],
                   check=True)  # fmt: skip
    return ptx.read_text(encoding="utf-8")


def architectures(nvcc):
    listed = subprocess.run([nvcc, "--list-gpu-arch"], check=True, capture_output=True, text=True).stdout
    return sorted(listed.split(), key=lambda name: int(name.removeprefix("compute_")))


def compiled_kernels(nvcc, chosen, folder):
    """All kernels, for each of the chosen architectures."""
    jobs = [(nvcc, source, architecture, Path(folder)) for architecture in chosen for source in PRECISIONS]
    with ThreadPoolExecutor() as workers:
        texts = list(workers.map(lambda job: compile_ptx(*job), jobs))
    kernels = []
    for (_, source, architecture, _), text in zip(jobs, texts):
        module = ptx_text.read_module(text)
        found = [Compiled(source, architecture, module, kernel) for kernel in module.kernels]
        expected = len(kinds(found[0].real)) if found else -1
        if len({kernel.title() for kernel in found}) != expected or len(found) != expected:
            raise ptx_text.UnknownPtx(f"{source}: other kernels than expected")
        kernels += found
    return kernels


@dataclass
class Points:
    """Points in the form of a kernel's arguments. `size` is (sx, sy, sz), or (n,) for a list; `numbers` are
    the three steps, the twelve elements of the map, the three axes or the list."""

    size: tuple
    numbers: object

    def count(self):
        return int(np.prod(self.size)) if min(self.size) > 0 else 0


@dataclass
class Expected:
    """The expected pressures at the last points of a launch, which may be NaN, the bounds on a kernel's
    errors, and the unit of these errors."""

    pressure: np.ndarray
    bound: np.ndarray
    unit: np.ndarray
    behind: np.ndarray  # whether a point is behind the piston

    def errors(self, found):
        found = found[len(found) - len(self.pressure) :]
        error = np.abs(found - self.pressure).astype(float)
        is_right = np.isnan(self.pressure) & np.isnan(found)
        return np.where(is_right, 0, np.where(np.isnan(error), np.inf, error))


@dataclass
class Case:
    """One launch, with its arguments and expected results."""

    points: Points
    piston: object
    order: int
    is_off: bool
    expected: Expected
    shape: Shape = None

    def default_shape(self):
        if len(self.points.size) == 1:
            return Shape((-(-(-(-max(self.points.size[0], 1) // 128)) // 64), 64, 1))
        sx, sy, sz = (max(size, 1) for size in self.points.size)
        return Shape((-(-sx // 16), -(-(sy * sz) // 8), 1))


class WrongRun(Exception):
    pass


def run(compiled, cases, seed, most_blocks=10**9):
    """Runs all cases at once. Returns the errors of each, the launches, and the number of threads that
    executed each basic block."""
    dtype, kind = compiled.dtype, compiled.kind
    item = dtype().itemsize
    room = sum(case.points.count() * (item * 5) + 4096 for case in cases) + 4096
    memory = Memory(BASE, room)
    constants = ConstantMemory(compiled.module.constants, len(cases))
    symbols = dict(constants.address)
    for name, content in compiled.module.variables.items():
        symbols[name] = memory.place(np.frombuffer(content, np.uint8), EVERYBODY)
    program = Program(compiled.kernel, symbols)

    shapes, arguments, results = [], [], []
    for launch, case in enumerate(cases):
        load_rule(constants, launch, compiled, case.order)
        count = case.points.count()
        arrays = 1 if kind.results == "pairs" else 2
        outputs = [memory.room(count * item * 2 // arrays, launch) for _ in range(arrays)]
        given = place_points(memory, launch, kind, dtype, case.points)
        piston = case.piston
        arguments.append([*outputs, *given, *np.array([piston.a, piston.b, piston.k], dtype)])
        shapes.append(case.shape or case.default_shape())
        results.append(outputs)

    untouched = memory.words.copy()
    launches = Launches(program, memory, constants, shapes, arguments, [c.is_off for c in cases], seed)
    visits = launches.run(most_blocks)

    if (launches.works & (launches.number >= counts(cases)[launches.launch_of])).any():
        raise WrongRun("a thread beyond the last point works")
    changed = memory.words != untouched
    if (changed & (memory.writer < 0)).any():
        raise WrongRun("memory outside of the results was changed")
    errors = []
    for case, outputs in zip(cases, results):
        values = []
        for address in outputs:
            words, stores = memory.content(address, case.points.count() * item * 2 // len(outputs))
            if (stores != 1).any():
                raise WrongRun("a result was not stored")
            values.append(words.view(dtype))
        parts = values[0].reshape(-1, 2).T if len(values) == 1 else values
        pressure = np.empty(case.points.count(), complex)
        pressure.real, pressure.imag = parts
        errors.append(case.expected.errors(pressure))
    return errors, launches, visits


def counts(cases):
    return np.array([case.points.count() for case in cases])


def load_rule(constants, launch, compiled, order):
    """Writes the half of the rule from -1 to 0 to the tables. An order of 0 leaves them unchanged."""
    nodes, weights = rule(max(order, 1))
    half = (max(order, 1) + 1) // 2
    constants.write(launch, compiled.tables + "x", nodes[:half].astype(compiled.dtype))
    constants.write(launch, compiled.tables + "w", weights[:half].astype(compiled.dtype))
    constants.write(launch, compiled.tables + "N", np.array([order], np.int32))


def place_points(memory, launch, kind, dtype, points):
    size = [n % (1 << 32) for n in points.size]
    if kind.points in ("steps", "map"):
        return [*size, *np.array(points.numbers, dtype)]
    if kind.points == "map in memory":
        return [*size, memory.place(np.array(points.numbers, dtype), launch)]
    if kind.points == "axes":
        return [*size, *(memory.place(np.array(axis, dtype), launch) for axis in points.numbers)]
    return [*size, memory.place(np.array(points.numbers, dtype), launch)]
