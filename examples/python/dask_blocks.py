"""Computes a field in blocks of points, on two processes, with dask.array.

    python dask_blocks.py          writes field.npy

Requires dask[array]. With dask.distributed the same lines run on many machines. A tolerance refers to the peak
of a call, here of a block. The order is therefore fixed for all blocks: a pressure then depends on its own
point only, and is bit for bit that of one call for all points.
"""

import dask
import dask.array as da
import numpy as np

import pistonfield as pf

k = 2 * np.pi / 1.5e-3
array = [pf.Piston(0.4e-3, 6e-3, (x, 0, 0)) for x in (np.arange(16) - 7.5) * 0.75e-3]
x, y, z = np.linspace(-10e-3, 10e-3, 41), np.linspace(-6e-3, 6e-3, 25), np.linspace(1e-3, 40e-3, 79)
points = da.stack(da.meshgrid(x, y, z, indexing="ij", sparse=False), axis=-1).rechunk((10, 25, 79, 3))

if __name__ == "__main__":
    order, error = pf.order(points[::2, ::2, ::2].compute(), array, k, 1e-4)
    print(f"{points.npartitions} blocks with order {order}: error {error:.1e} of the peak")
    p = points.map_blocks(
        pf.field, pistons=array, k=k, order=order, drop_axis=3, dtype=complex, meta=np.empty((0, 0, 0), complex)
    )
    with dask.config.set(scheduler="processes", num_workers=2):
        np.save("field.npy", p.compute())
