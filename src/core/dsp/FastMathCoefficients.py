#!/usr/bin/env python3
"""Prints the polynomials of FastMath.h.

Each is the interpolation of its function at the Chebyshev points of its interval, worked out with 60 digits and
rounded once to doubles; that is within a factor of two of the best polynomial of the degree. The largest
relative error of the whole approximation, before rounding, is printed beside it. Needs python3-mpmath; run by
hand when a polynomial is to change.
"""
from mpmath import atan, cos, expm1, log, matrix, mp, mpf, pi, polyval, sin, lu_solve, sqrt, taylor

mp.dps = 60


def near_zero(function, terms=30):
    """`function`, and its series where the closed form would divide 0 by 0."""
    series = taylor(function, mpf("0.01"), terms)
    return lambda x: function(x) if abs(x) > mpf("1e-4") else polyval(series[::-1], x - mpf("0.01"))


def fit(name, function, low, high, count, whole):
    """`whole(x, q)`: relative error of the approximation whose polynomial has the value q at x."""
    low, high = mpf(low), mpf(high)
    points = [(low + high) / 2 + (high - low) / 2 * cos(pi * (2 * k + 1) / (2 * count)) for k in range(count)]
    rows = matrix([[x**power for power in range(count)] for x in points])
    solved = lu_solve(rows, matrix([near_zero(function)(x) for x in points]))
    rounded = [mpf(float(c)) for c in solved]
    grid = [low + (high - low) * (k + mpf("0.5")) / 1000 for k in range(1000)]
    worst = max(abs(whole(x, polyval(rounded[::-1], x))) for x in grid)
    print(f"// {name}: error {float(worst):.1e}")
    print("{" + ", ".join(repr(float(c)) for c in solved) + "}\n")


half_ln2 = log(2) / 2 * mpf("1.0001")
fit("exp2: (2^r - 1) / r", lambda r: expm1(r * log(2)) / r, -0.50001, 0.50001, 11,
    lambda r, q: (1 + r * q) / 2**r - 1)
fit("expm1: (e^r - 1 - r) / r^2", lambda r: (expm1(r) - r) / r**2, -half_ln2, half_ln2, 11,
    lambda r, q: (r + r * r * q) / expm1(r) - 1)
top = ((sqrt(2) - 1) / (sqrt(2) + 1)) ** 2 * mpf("1.0001")
fit("log: (2 atanh(s) - 2 s) / (s z), z = s^2",
    lambda z: (log((1 + sqrt(z)) / (1 - sqrt(z))) / sqrt(z) - 2) / z, 0, top, 7,
    lambda z, q: (2 + z * q) * sqrt(z) / log((1 + sqrt(z)) / (1 - sqrt(z))) - 1)
top = (sqrt(2) - 1) ** 2 * mpf("1.0001")
fit("atan: (atan(t) - t) / (t z), z = t^2", lambda z: (atan(sqrt(z)) / sqrt(z) - 1) / z, 0, top, 12,
    lambda z, q: (1 + z * q) * sqrt(z) / atan(sqrt(z)) - 1)
top = (pi / 4) ** 2 * mpf("1.0001")
fit("sin: (sin(r) - r) / (r z), z = r^2", lambda z: (sin(sqrt(z)) / sqrt(z) - 1) / z, 0, top, 7,
    lambda z, q: (1 + z * q) * sqrt(z) / sin(sqrt(z)) - 1)
fit("cos: (cos(r) - 1 + z / 2) / z^2, z = r^2", lambda z: (cos(sqrt(z)) - 1 + z / 2) / z**2, 0, top, 7,
    lambda z, q: (1 - z / 2 + z * z * q) / cos(sqrt(z)) - 1)


def split(name, value, bits):
    """High part with `bits` significant bits, so that its product with a small whole number is exact."""
    exponent = mp.floor(mp.log(value, 2)) + 1
    high = mp.nint(value * mpf(2) ** (bits - exponent)) * mpf(2) ** (exponent - bits)
    print(f"// {name}: {float(high)!r} + {float(value - high)!r}")


split("ln 2", log(2), 36)
split("log10 2", log(2) / log(10), 36)
split("pi / 2", pi / 2, 33)
print(f"// log2 e {float(1 / log(2))!r}, log2 10 {float(log(10) / log(2))!r}, log10 e {float(1 / log(10))!r}")
print(f"// pi / 2 = {float(pi / 2)!r} + {float(pi / 2 - mpf(float(pi / 2)))!r}")
