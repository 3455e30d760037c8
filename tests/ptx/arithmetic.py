"""The arithmetic of PTX that numpy has no function for, on arrays: fma, which rounds once, and the
approximate root and reciprocal, whose results are the correctly rounded ones or, as the caller chooses,
as far below or above them as the PTX manual allows."""

from fractions import Fraction

import numpy as np

F32, F64 = np.float32, np.float64
SMALLEST_NORMAL = np.finfo(F32).tiny


def fma32(a, b, c):
    """The product is exact in double precision, and the sum nearly is. Its second rounding is wrong only if
    the first one produced or removed a midpoint between two floats."""
    product = a.astype(F64) * b
    total = product + c
    result = total.astype(F32)
    bits = total.view(np.uint64)
    doubtful = ((bits & np.uint64(0x1FFFFFFF)) == 0x10000000) | (np.abs(result) < SMALLEST_NORMAL)
    if doubtful.any():
        doubtful = np.nonzero(doubtful)[0]
        product, c = (np.broadcast_to(v, total.shape)[doubtful] for v in (product, c.astype(F64)))
        result[doubtful] = odd_sum(product, c).astype(F32)
    return result


def odd_sum(a, b):
    """a + b rounded to odd: an inexact sum gets a last bit of 1, so that rounding it again, to fewer bits,
    gives the same result as rounding the exact sum."""
    total = a + b
    rest = error_of_sum(a, b, total)
    toward = np.nextafter(total, np.where(rest > 0, np.inf, -np.inf))
    is_even = (total.view(np.uint64) & np.uint64(1)) == 0
    return np.where(is_even & (rest != 0) & np.isfinite(rest), toward, total)


def error_of_sum(a, b, total):
    part = total - a
    return (a - (total - part)) + (b - part)


def split(a):
    """a as the sum of two numbers of at most 26 bits."""
    scaled = a * 134217729.0  # 2^27 + 1
    high = scaled - (scaled - a)
    return high, a - high


def fma64(a, b, c):
    """Computes the product as the exact sum of two numbers, and adds c with all steps but the last rounded to
    odd. Numbers so small or so large that a step could leave the range are computed as fractions."""
    a, b, c = np.broadcast_arrays(a, b, c)
    product = a * b
    result = product + c
    ordinary = np.isfinite(result) & (a != 0) & (b != 0)
    safe = ordinary.copy()
    for value in (a, b):
        safe &= (np.abs(value) < 2.0**500) & (np.abs(value) > 2.0**-400)
    safe &= (c == 0) | ((np.abs(c) < 2.0**900) & (np.abs(c) > 2.0**-800))
    if not safe.all():
        for n in np.nonzero(np.isfinite(a) & np.isfinite(b) & np.isfinite(c) & ~safe)[0]:
            if a[n] != 0 and b[n] != 0:
                result[n] = fraction_fma(a[n], b[n], c[n])
        a, b, c, product = (value[safe] for value in (a, b, c, product))
    (a1, a0), (b1, b0) = split(a), split(b)
    rest = a0 * b0 - (((product - a1 * b1) - a0 * b1) - a1 * b0)
    low = c + rest
    lowest = error_of_sum(c, rest, low)
    high = product + low
    middle = error_of_sum(product, low, high)
    result[safe] = high + odd_sum(middle, lowest)
    return result


def fraction_fma(a, b, c):
    exact = Fraction(float(a)) * Fraction(float(b)) + Fraction(float(c))
    if exact == 0:
        return a * b + c
    try:
        return float(exact)
    except OverflowError:
        return np.copysign(np.inf, float(exact > 0) - 0.5)


def flushed(a):
    return np.where(np.abs(a) < SMALLEST_NORMAL, np.copysign(F32(0), a), a)


def near(nearest, exact, most, way):
    """The last float below (`way` is -1) or above (1) `nearest` that differs from the exact value by at most
    `most`, which is less than two units in the last place. Infinities and NaN are unchanged."""
    for _ in range(2):
        moved = (nearest.view(np.int32) + way).view(F32)
        nearest = np.where(np.isfinite(nearest) & (np.abs(moved - exact) <= most), moved, nearest)
    return nearest


def sqrt_approx(a, way):
    """Accurate to a relative error of 2^-23."""
    a = flushed(a)
    exact = np.sqrt(a.astype(F64))
    return near(exact.astype(F32), exact, exact * 2.0**-23, way)


def rcp_approx(a, way):
    """Accurate to a unit in the last place."""
    exact = 1 / flushed(a).astype(F64)
    nearest = exact.astype(F32)
    return flushed(near(nearest, exact, np.spacing(np.abs(nearest)), way))
