"""The twelve kernels with their parameters, and launches of them with the launchers' shapes."""

import subprocess
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

import numpy as np

import ptx_text
from launch import MARGIN, Memory, Program, Shape
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
    """One kernel of one PTX file."""

    def __init__(self, source, architecture, module, kernel):
        self.real, self.dtype, self.tables = PRECISIONS[source]
        self.architecture, self.module, self.kernel = architecture, module, kernel
        types = tuple(type_name for type_name, _ in kernel.parameters)
        known = kinds(self.real)
        if types not in known or known[types].name not in kernel.name:
            raise ptx_text.UnknownPtx(f"{kernel.name} with parameters {' '.join(types)}")
        self.kind = known[types]
        self.constants, end = {}, MARGIN  # addresses
        for name, size in module.constants.items():
            self.constants[name] = end
            end += -(-size // MARGIN) * MARGIN + MARGIN
        self.program = Program([kernel], {**self.constants, **self.fresh_memory()[1]})

    def fresh_memory(self):
        """Memory with the file's own variables, and their addresses."""
        memory = Memory()
        return memory, {name: memory.place(np.frombuffer(content, np.uint8))
                        for name, content in self.module.variables.items()}  # fmt: skip

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
        with ThreadPoolExecutor() as workers:
            found = list(workers.map(lambda kernel: Compiled(source, architecture, module, kernel), module.kernels))
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
    """The expected pressures at the last points of a launch, which may be NaN, and the bounds on a kernel's
    errors."""

    pressure: np.ndarray
    bound: np.ndarray

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

    def launch_shape(self):
        if self.shape:
            return self.shape
        if len(self.points.size) == 1:
            return Shape((-(-(-(-max(self.points.size[0], 1) // 128)) // 64), 64, 1))
        sx, sy, sz = (max(size, 1) for size in self.points.size)
        return Shape((-(-sx // 16), -(-(sy * sz) // 8), 1))


def run(compiled, cases, seed):
    """Runs all cases: the errors of each, and how many threads came to each block."""
    results = [run_case(compiled, case, seed + n) for n, case in enumerate(cases)]
    errors = [case.expected.errors(pressure) for case, (pressure, _) in zip(cases, results)]
    return errors, sum(visits for _, visits in results)


def run_case(compiled, case, seed):
    dtype, count = compiled.dtype, case.points.count()
    memory, _ = compiled.fresh_memory()
    load_rule(memory, compiled, case.order)
    arrays = 1 if compiled.kind.results == "pairs" else 2
    outputs = [memory.room(count * dtype().itemsize * 2 // arrays) for _ in range(arrays)]
    given = place_points(memory, compiled.kind, dtype, case.points)
    piston = np.array([case.piston.a, case.piston.b, case.piston.k], dtype)
    visits = compiled.program.run(case.launch_shape(), [*outputs, *given, *piston], memory, points=count,
                                  is_off=case.is_off, seed=seed)  # fmt: skip
    values = [memory.results(address, dtype) for address in outputs]
    parts = values[0].reshape(-1, 2).T if arrays == 1 else values
    pressure = np.empty(count, complex)
    pressure.real, pressure.imag = parts
    return pressure, visits


def load_rule(memory, compiled, order):
    """The half of the rule from -1 to 0, as the tables are loaded. An order of 0 leaves what was there."""
    nodes, weights = rule(max(order, 1))
    half = (max(order, 1) + 1) // 2
    for name, content in (("x", nodes[:half].astype(compiled.dtype)), ("w", weights[:half].astype(compiled.dtype)),
                          ("N", np.array([order], np.int32))):  # fmt: skip
        memory.place(content, compiled.constants[compiled.tables + name])


def place_points(memory, kind, dtype, points):
    size = [n % (1 << 32) for n in points.size]
    if kind.points in ("steps", "map"):
        return [*size, *np.array(points.numbers, dtype)]
    arrays = points.numbers if kind.points == "axes" else [points.numbers]
    return [*size, *(memory.place(np.array(array, dtype)) for array in arrays)]
