"""What else may happen while a field is computed: other threads, interruptions, callbacks, forks."""

from __future__ import annotations

import multiprocessing
import os
import subprocess
import sys
import threading
import time
from collections.abc import Callable
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pytest
from numpy.typing import NDArray

import pistonfield as pf

PISTON = pf.Piston(5, 7.5)
K = 2 * np.pi
POINTS = np.random.default_rng(1).uniform([-10, -10, 0.1], [10, 10, 40], (20_000, 3))
ROW = [pf.Piston(0.4, 8, (x, 0, 0)) for x in np.linspace(-10, 10, 40)]


def compute(points: NDArray[np.float64], progress: Callable[[float], object] | None) -> NDArray[np.complex128]:
    return pf.field(points, ROW, K, tolerance=1e-11, progress=progress)


def points_for_half_a_second() -> NDArray[np.float64]:
    start = time.perf_counter()
    compute(POINTS[:5000], None)
    times = 0.5 / (time.perf_counter() - start)
    return np.resize(POINTS, (max(40_000, int(5000 * times)), 3))  # at least three pieces of work


MANY = points_for_half_a_second()


def compute_for_a_while(progress: Callable[[float], object] | None = None) -> NDArray[np.complex128]:
    return compute(MANY, progress)


def test_other_threads_run_meanwhile() -> None:
    started = threading.Event()

    def work() -> None:
        started.set()
        compute_for_a_while()

    worker = threading.Thread(target=work)
    worker.start()
    started.wait()
    steps = 0
    while worker.is_alive():
        time.sleep(0.001)
        steps += 1
    worker.join()
    assert steps >= 20


BURST = "pf.tone_burst(1, 2, 40), times=np.arange(0, 60, 0.02)"
WORK = {
    "points": "pf.field(points, row, k, tolerance=1e-11)",
    "points of an order": "pf.field(points, row, k, order=512)",
    "grid": "pf.grid(x, x, 0.5 + x[x > 0], row, k, tolerance=1e-11)",
    "crooked grid": "pf.grid(x**3 / 400, x**3 / 500, 0.5 + abs(x), row, k, tolerance=1e-9)",
    "order": "pf.order(points, row, k, 1e-6)",
    "pulse": f"pf.pulse(points[:10_000], row, 1, {BURST})",
    "lossy pulse": f"pf.pulse(abs(points[:10_000]), row, pf.Medium(1, 1e-2), {BURST})",
    "echo": f"pf.echo(points[:10_000], row, 1, {BURST})",
    "progress": "pf.field(points, row, k, tolerance=1e-11, progress=lambda fraction: None)",
}
INTERRUPTED = """
import sys, time
import numpy as np
import pistonfield as pf
k = 2 * np.pi
row = [pf.Piston(0.4, 8, (x, 0, 0)) for x in np.linspace(-10, 10, 256)]
points = np.random.default_rng(1).uniform([-10, -10, 0.1], [10, 10, 40], (1_000_000, 3))
x = np.linspace(-20, 20, 301)
few = pf.field(points[:10], row, k)
print("ready", flush=True)
try:
    WORK
except KeyboardInterrupt:
    ended = time.monotonic()
    same = np.array_equal(few, pf.field(points[:10], row, k))
    print(ended, same, flush=True)
"""


def seconds_to_end(work: str) -> float:
    """The seconds from Ctrl-C to KeyboardInterrupt in another process. Then the next call must be right."""
    program = INTERRUPTED.replace("WORK", work)
    with subprocess.Popen([sys.executable, "-c", program], stdout=subprocess.PIPE, text=True) as process:
        assert process.stdout is not None
        try:
            assert process.stdout.readline() == "ready\n"
            time.sleep(0.7)
            sent = time.monotonic()
            process.send_signal(subprocess.signal.SIGINT)  # type: ignore[attr-defined]
            ended, same = process.stdout.readline().split()
            assert same == "True"
            return float(ended) - sent
        finally:
            process.kill()


@pytest.mark.parametrize("work", WORK)
def test_interruption_within_a_quarter_of_a_second(work: str) -> None:
    # Other programs may take the processor for a while, but not each time.
    assert min(seconds_to_end(WORK[work]) for _ in range(2)) < 0.25


def test_progress_ascends_to_one() -> None:
    fractions: list[float] = []
    threads = set()

    def progress(fraction: float) -> None:
        fractions.append(fraction)
        threads.add(threading.get_ident())

    p = compute_for_a_while(progress)
    assert len(fractions) > 2
    assert fractions == sorted(fractions)
    assert fractions[0] >= 0
    assert fractions[-1] == 1
    assert fractions.count(1) == 1
    assert threads == {threading.get_ident()}
    assert np.array_equal(p, compute_for_a_while())


@pytest.mark.parametrize("few", [True, False])
def test_short_work_ends_with_one(few: bool) -> None:
    fractions: list[float] = []
    pf.field(POINTS[: 1 if few else 0], PISTON, K, progress=fractions.append)
    pf.grid([0] * few, 0, 1, PISTON, K, progress=fractions.append)
    assert fractions == [1, 1]


class Stop(BaseException):
    pass


@pytest.mark.parametrize("error", [Stop, StopIteration, KeyboardInterrupt, MemoryError, pf.FieldError])
@pytest.mark.parametrize("at", [1, 3, "the end"])
def test_exceptions_of_the_callback_pass_through(error: type[BaseException], at: object) -> None:
    raised: list[BaseException] = []
    calls = 0

    def progress(fraction: float) -> None:
        nonlocal calls
        calls += 1
        if calls == at or (at == "the end" and fraction == 1):
            raised.append(error("enough"))
            raise raised[0]

    with pytest.raises(error, match="enough") as caught:
        compute_for_a_while(progress)
    assert caught.value is raised[0]
    assert at in (calls, "the end")


def test_a_callback_may_compute() -> None:
    expected = pf.field(POINTS[:10], PISTON, K)
    compute_for_a_while(lambda _: np.testing.assert_array_equal(pf.field(POINTS[:10], PISTON, K), expected))


def test_eight_threads_at_once() -> None:
    def bits_for(tolerance: float) -> bytes:
        p = pf.field(POINTS, PISTON, K, tolerance=tolerance)
        return p.tobytes() + pf.grid([0, 1, 2], [0, 1], np.arange(1, 40), ROW, K, tolerance=tolerance).tobytes()

    tolerances = [1e-3, 1e-6, 1e-9, 1e-11] * 4
    expected = [bits_for(tolerance) for tolerance in tolerances]
    with ThreadPoolExecutor(8) as pool:
        assert list(pool.map(bits_for, tolerances)) == expected


def in_the_fork(queue: multiprocessing.SimpleQueue[bytes]) -> None:
    queue.put(pf.field(POINTS, PISTON, K).tobytes())


def test_a_fork_computes() -> None:
    expected = pf.field(POINTS, PISTON, K).tobytes()
    context = multiprocessing.get_context("fork")
    queue = context.SimpleQueue()
    child = context.Process(target=in_the_fork, args=(queue,))
    child.start()
    try:
        child.join(0.01)
        assert queue._reader.poll(30)  # type: ignore[attr-defined]
        assert queue.get() == expected
        child.join(10)
        assert child.exitcode == 0
    finally:
        child.kill()


def test_no_thread_is_left() -> None:
    pf.field(POINTS, PISTON, K)
    before = len(os.listdir("/proc/self/task"))
    pf.field(POINTS, PISTON, K)
    assert len(os.listdir("/proc/self/task")) == before
