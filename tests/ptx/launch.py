"""Compiles kernels that translate.py has made C++ of, and launches them."""

import ctypes
import subprocess
import tempfile
from dataclasses import dataclass
from pathlib import Path

import numpy as np

from translate import Translator

MARGIN, BASE = 256, 0x7F0000000000


@dataclass
class Shape:
    """A launch's three-dimensional grid of blocks and one-dimensional block of threads."""

    grid: tuple
    block: int = 128

    def threads(self):
        return int(np.prod(self.grid)) * self.block


class WrongRun(Exception):
    pass


class Array(ctypes.Structure):
    _fields_ = [(name, ctypes.c_uint64) for name in ("is_constant", "address", "size")] + [
        (name, ctypes.c_void_p) for name in ("data", "stores")
    ] + [("is_state", ctypes.c_uint64)]


class Launch(ctypes.Structure):
    _fields_ = [
        *((f"grid_{axis}", ctypes.c_uint64) for axis in "xyz"),
        *((name, ctypes.c_uint64) for name in ("block", "points", "is_off", "seed")),
        ("parameters", ctypes.c_void_p), ("arrays", ctypes.POINTER(Array)), ("count", ctypes.c_uint64),
    ]  # fmt: skip


class Memory:
    """The arrays that a launch may use. Between any two lie addresses of none."""

    def __init__(self):
        self.arrays, self.contents, self.next = [], [], BASE

    def place(self, content, constant_address=None):
        """An array to be read; its address."""
        return self.add(np.ascontiguousarray(content), constant_address, None)

    def room(self, size):
        """An array of results, of NaN."""
        return self.add(np.full(size, 0xFF, np.uint8), None, np.zeros(size, np.uint8))

    def state(self, content):
        """An array that a thread reads before it stores to it; its address."""
        return self.add(np.array(content), None, np.zeros(content.nbytes, np.uint8), is_state=True)

    def add(self, content, constant_address, stores, is_state=False):
        address = self.next if constant_address is None else constant_address
        self.arrays.append(Array(constant_address is not None, address, content.nbytes, content.ctypes.data,
                                 None if stores is None else stores.ctypes.data, is_state))  # fmt: skip
        self.contents.append((address, content, stores))
        self.next += -(-content.nbytes // MARGIN) * MARGIN + MARGIN
        return address

    def results(self, address, dtype):
        content, stores = next(entry[1:] for entry in self.contents if entry[0] == address)
        if (stores != 1).any():
            raise WrongRun("a result was not stored")
        return content.view(dtype)


class Program:
    """Kernels in one library; `symbols` are addresses by name."""

    def __init__(self, kernels, symbols):
        self.kernels = kernels
        translations = [Translator(kernel, symbols, f"kernel{n}") for n, kernel in enumerate(kernels)]
        self.blocks = [translation.blocks for translation in translations]
        source = '#include "machine.h"\n' + "".join(translation.code for translation in translations)
        with tempfile.TemporaryDirectory() as folder:
            library = Path(folder, "kernels.so")
            subprocess.run(["c++", "-x", "c++", "-", "-std=c++17", "-w", "-fwrapv", "-ffp-contract=off",
                            "-I", Path(__file__).parent, "-shared", "-fPIC", "-o", library],
                           input=source, text=True, check=True)  # fmt: skip
            self.library = ctypes.CDLL(library)

    def run(self, shape, arguments, memory, n=0, points=1 << 62, is_off=False, seed=1):
        """Runs all threads of a launch of kernel n; how many came to each of its basic blocks."""
        values = np.zeros(len(arguments), np.uint64)
        for place, ((type_name, _), value) in enumerate(zip(self.kernels[n].parameters, arguments)):
            dtype = np.dtype(type_name[0].replace("b", "u").replace("s", "i") + str(int(type_name[1:]) // 8))
            values[place : place + 1].view(dtype)[0] = value
        arrays = (Array * len(memory.arrays))(*memory.arrays)
        launch = Launch(*shape.grid, shape.block, points, is_off, seed, values.ctypes.data,
                        arrays, len(arrays))  # fmt: skip
        visits = np.zeros(len(self.blocks[n]), np.uint64)
        function = self.library[f"kernel{n}"]
        function.restype = ctypes.c_char_p
        error = function(ctypes.byref(launch), ctypes.c_void_p(visits.ctypes.data))
        if error:
            raise WrongRun(error.decode())
        return visits
