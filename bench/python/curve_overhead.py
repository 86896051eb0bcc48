#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""A call of tolvik.curve from Python above the time of the calculation itself.

The calculation is timed by the same call on more and more points: its time is the slope, and the overhead is what is left at
no points. Each figure is the least of many rounds. Beside it stands the recursion written in numpy, on the largest grid.

    PYTHONPATH=build/python python3 bench/python/curve_overhead.py
"""
import pathlib
import timeit

import numpy as np

import tolvik

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
SIZES = (8, 64, 128, 256)


def least(call, rounds=30, calls=200):
    return min(timeit.repeat(call, number=calls, repeat=rounds)) / calls


def textbook(state, q):
    """The Parratt recursion in numpy, sigma light, with the nine samples of the resolution."""
    k0 = 2 * np.pi / state.wavelength
    n = 1 - state.layers.layer_delta + 1j * state.layers.layer_beta
    d, sigma = state.layers.layer_d, state.layers.layer_sigma
    offsets = np.linspace(-1, 1, 9) * state.resolution
    weights = np.exp(-np.linspace(-2, 2, 9) ** 2 / 2)
    s2 = ((q[:, None] + offsets) / (2 * k0)) ** 2
    kz = [k0 * np.sqrt(index ** 2 - 1 + s2) for index in n]
    r = 0
    for j in range(len(n) - 1):
        f = (kz[j + 1] - kz[j]) / (kz[j + 1] + kz[j]) * np.exp(-2 * kz[j] * kz[j + 1] * sigma[j] ** 2)
        r = r * np.exp(2j * kz[j] * d[j]) if j else 0
        r = (f + r) / (1 + f * r)
    return abs(r) ** 2 @ weights / weights.sum()


def main():
    state = tolvik.load(EXAMPLES / "oxide_on_silicon.state")
    state.resolution = 0.002
    grids = [np.linspace(0.02, 0.4, size) for size in SIZES]
    times = [least(lambda: tolvik.curve(state, q)) for q in grids]
    slope, overhead = np.polyfit(SIZES, times, 1)
    print("points  call / µs")
    for size, seconds in zip(SIZES, times):
        print(f"{size:6d}  {seconds * 1e6:9.2f}")
    print(f"calculation {slope * 1e9:.1f} ns per point; overhead of a call {overhead * 1e6:.2f} µs")
    print(f"the recursion in numpy, {SIZES[-1]} points: {least(lambda: textbook(state, grids[-1]), 5, 20) * 1e6:.0f} µs")


if __name__ == "__main__":
    main()
