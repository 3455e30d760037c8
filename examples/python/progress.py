"""Shows a progress bar while a field is computed; Ctrl-C ends it. Requires tqdm."""

import numpy as np
from tqdm import tqdm

import pistonfield as pf

k = 2 * np.pi / 1.5e-3
array = [pf.Piston(0.4e-3, 6e-3, (x, 0, 0)) for x in (np.arange(64) - 31.5) * 0.75e-3]
points = np.random.default_rng(1).uniform([-20e-3, -20e-3, 1e-3], [20e-3, 20e-3, 80e-3], (500_000, 3))

with tqdm(total=1, bar_format="{l_bar}{bar}| {elapsed}<{remaining}") as bar:
    p = pf.field(points, array, k, tolerance=1e-9, progress=lambda fraction: bar.update(fraction - bar.n))
