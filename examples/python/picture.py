"""Draws the field of a piston in the plane y = 0 to picture.png."""

import matplotlib.pyplot as plt
import numpy as np

import pistonfield as pf

wavelength = 1.5e-3  # m
x, z = np.linspace(-10e-3, 10e-3, 201), np.linspace(0.2e-3, 40e-3, 400)
p = pf.grid(x, 0, z, pf.Piston(7.5e-3, 11e-3), 2 * np.pi / wavelength)
pf.plot(x, 0, z, p, "dB")
plt.savefig("picture.png", dpi=150)
