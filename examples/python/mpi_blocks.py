"""Computes a field in blocks of points, one on each process of MPI.

    mpirun -n 2 python mpi_blocks.py       writes field.npy

Requires mpi4py and an MPI, such as Debian's openmpi-bin. A tolerance refers to the peak of a call, here of a
block. The order is therefore fixed for all processes: a pressure then depends on its own point only, and is bit
for bit that of one call for all points.
"""

import numpy as np
from mpi4py import MPI

import pistonfield as pf

k = 2 * np.pi / 1.5e-3
array = [pf.Piston(0.4e-3, 6e-3, (x, 0, 0)) for x in (np.arange(16) - 7.5) * 0.75e-3]
x, y, z = np.linspace(-10e-3, 10e-3, 41), np.linspace(-6e-3, 6e-3, 25), np.linspace(1e-3, 40e-3, 79)
points = np.stack(np.meshgrid(x, y, z, indexing="ij"), axis=-1)

if __name__ == "__main__":
    processes = MPI.COMM_WORLD
    order = processes.bcast(pf.order(points[::2, ::2, ::2], array, k, 1e-4)[0] if processes.rank == 0 else None)
    block = np.array_split(points, processes.size)[processes.rank]
    blocks = processes.gather(pf.field(block, array, k, order=order))
    print(f"process {processes.rank} of {processes.size}: {block[..., 0].size} points with order {order}")
    if blocks:
        np.save("field.npy", np.concatenate(blocks))
