# SPDX-License-Identifier: GPL-2.0-or-later
"""mpirun -n N python3 -m mpi4py.futures map_of_ranks.py EXAMPLES: all ranks give the bytes of the serial map."""
import os
import pathlib
import sys

import numpy as np
from mpi4py.futures import MPIPoolExecutor

import tolvik
from tolvik import executors


class Ranks:
    """The process in which each task runs."""

    def __call__(self, task):
        return os.getpid()

    def name_of(self, task):
        return f"task {task}"


def main(examples):
    executors.SERIAL_BELOW = 0.0  # the ranks get the work, however little it is
    executors.CHUNK_SECONDS = 1e-9
    state = tolvik.load(examples / "cobalt.state")
    state.load_tables(examples)
    conditions = {"energies": np.linspace(772, 798, 27), "q": np.linspace(0.01, 0.3, 100),
                  "polarization": ("left", "right")}
    serial = tolvik.energy_map(state, **conditions)
    with MPIPoolExecutor() as pool:
        processes = set(executors.run(Ranks(), 40, executor=pool)) - {os.getpid()}
        spread = tolvik.energy_map(state, executor=pool, **conditions)
    if spread.R.tobytes() != serial.R.tobytes():
        sys.exit("the map of the ranks differs from the serial one")
    if not processes:
        sys.exit("no other rank took a task")
    print(f"{len(processes)} ranks beside the caller gave the serial bytes")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]))
