# SPDX-License-Identifier: GPL-2.0-or-later
"""Types of the C++ module; python/tests/test_stub.py compares them with it."""
import numpy
import numpy.typing

__version__: str

def _kramers_kronig(energy: numpy.typing.NDArray[numpy.float64],
                    beta: numpy.typing.NDArray[numpy.float64]) -> numpy.typing.NDArray[numpy.float64]: ...

class State:
    def __init__(self) -> None: ...
    def _share(self, other: State) -> None: ...
    def _load(self, path: str) -> None: ...
    def _read(self, text: str, name: str) -> None: ...
    def _save(self, path: str) -> None: ...
    def _text(self) -> str: ...
    mode: int
    precision: int
    disablescript: int
    resolution: float
    qzmax: float
    numberofpoints: int
    averaging: int
    fittemp: float
    fitdtemp: float
    fitqzmin: float
    fitqzmax: float
    fastresolution: bool
    usemeasurementqz: bool
    showangle: int
    fitalgorithm: int
    fiterrorfunction: int
    fitresolution: bool
    fitasymmetry: int
    gausscoupling: bool
    layersegmentationmode: int
    algorithm: int
    scattering: int
    fitmeasmult: bool
    fitdeltaqz: bool
    engscanqz: float
    engscanmin: float
    engscanmax: float
    ray1sigmare: float
    ray1sigmaim: float
    ray1pire: float
    ray1piim: float
    ray2sigmare: float
    ray2sigmaim: float
    ray2pire: float
    ray2piim: float
    minlayerthickness: float
    maxlayerthickness: float
    gradientscale: float
    segmentationmodel: int
    magnetizationmode: int
    maggamma: float
    magphi: float
    evo_random: int
    evo_population: int
    evo_elite: float
    evo_parents: float
    evo_range: float
    evo_mixing: float
    evo_probability: float
    evo_takeeliteasparents: bool
    evo_evorestrictfitparameters: bool
    ocautomatic: int
    activedatasetindex: int
    epsilon: float
    fitpenalty: float
    mulqz4: int
    polcorrection: int
    kktableindex: int
    kkoffset: float
