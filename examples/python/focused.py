"""Draws the beam of a focused array in decibels, in a plane and across the focus, to focused.png."""

import matplotlib.pyplot as plt
import numpy as np

import pistonfield as pf

k = 2 * np.pi / 0.3e-3  # 5 MHz in water
depth = 30e-3  # of the focus, m
array = pf.focused(pf.linear_array(64, pitch=0.3e-3, width=0.27e-3, height=5e-3), (0, 0, depth), k)

x, z = np.linspace(-12e-3, 12e-3, 481), np.linspace(1e-3, 60e-3, 591)
plane = pf.grid(x, 0, z, array, k)
line = np.linspace(-4e-3, 4e-3, 8001)
beam = abs(pf.grid(line, 0, depth, array, k)[:, 0, 0])
level = 20 * np.log10(beam / beam.max())
print(f"-6 dB width {np.ptp(line[level >= -6]) * 1e3:.2f} mm, side lobes {level[abs(line) > 0.6e-3].max():.1f} dB")

_, (above, below) = plt.subplots(2, 1, figsize=(7, 6), layout="constrained")
pf.plot(x, 0, z, plane, "dB", ax=above)
below.plot(line * 1e3, level)
below.set(xlabel="x / mm", ylabel="|p| / dB", xlim=(-4, 4), ylim=(-40, 1), title=f"z = {depth * 1e3:g} mm")
plt.savefig("focused.png", dpi=150)
