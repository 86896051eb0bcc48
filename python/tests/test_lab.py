# SPDX-License-Identifier: GPL-2.0-or-later
"""Files of diffractometers, written here as the instruments write them."""
import sys

import numpy as np
import pytest

from tolvik import units
from tolvik.errors import DataError
from tolvik.formats import read

pytest.importorskip("xrayutilities")

XRDML = """<?xml version="1.0" encoding="UTF-8"?>
<xrdMeasurements xmlns="http://www.xrdml.com/XRDMeasurement/1.5" status="Completed">
<xrdMeasurement measurementType="Scan" status="Completed" sampleMode="Reflection">
<usedWavelength intended="K-Alpha 1"><kAlpha1 unit="Angstrom">1.5405980</kAlpha1></usedWavelength>
<scan appendNumber="0" mode="Continuous" scanAxis="2Theta-Omega" status="Completed">
<dataPoints>
<positions axis="2Theta" unit="deg"><startPosition>0.2</startPosition><endPosition>0.8</endPosition></positions>
<positions axis="Omega" unit="deg"><startPosition>0.1</startPosition><endPosition>0.4</endPosition></positions>
<commonCountingTime unit="seconds">2.0</commonCountingTime>
<beamAttenuationFactors>100 1 1</beamAttenuationFactors>
<intensities unit="counts">40000 900 16</intensities>
</dataPoints></scan></xrdMeasurement></xrdMeasurements>
"""
RAS = """*RAS_DATA_START
*RAS_HEADER_START
*HW_XG_WAVE_LENGTH_ALPHA1 "1.540593"
*MEAS_COND_AXIS_NAME_INTERNAL-0 "TwoTheta"
*MEAS_COND_AXIS_POSITION-0 "0.0"
*MEAS_DATA_COUNT "3"
*MEAS_SCAN_AXIS_X_INTERNAL "TwoThetaOmega"
*MEAS_SCAN_START_TIME "05/06/24 07:08:09"
*RAS_HEADER_END
*RAS_INT_START
0.2000 400.0 100.0
0.5000 900.0 1.0
0.8000 16.0 1.0
*RAS_INT_END
*RAS_DATA_END
"""
SPEC = """#F film
#E 1714978089
#D Mon May 06 07:08:09 2024

#S 1 ascan tth 0.2 0.8 2 1
#D Mon May 06 07:08:10 2024
#T 1  (Seconds)
#N 3
#L tth  Monitor  Detector
0.2 1000 400
0.5 1000 900
0.8 1000 16

"""


def write(tmp_path, name, text):
    path = tmp_path / name
    path.write_text(text)
    return path


def test_xrdml(tmp_path, capsys):
    (data,) = read(write(tmp_path, "a.xrdml", XRDML))
    energy = 12398.326 / 1.540598
    assert data.energy == pytest.approx(energy)
    assert data.q == pytest.approx(units.q_from_two_theta([0.2, 0.5, 0.8], energy))
    assert data.r == pytest.approx([20000, 450, 8]), "counts per second"
    # 40000 is the rate of 400 counted photons: a relative error of 1/20.
    assert data.dr / data.r == pytest.approx(1 / np.sqrt([400, 900, 16]))
    assert capsys.readouterr().out == ""


def test_ras(tmp_path, capsys):
    (data,) = read(write(tmp_path, "a.ras", RAS))
    assert data.energy == pytest.approx(12398.326 / 1.540593)
    assert data.r == pytest.approx([40000, 900, 16]) and data.dr / data.r == pytest.approx(1 / np.sqrt([400, 900, 16]))
    assert capsys.readouterr().out == ""


def test_spec(tmp_path, capsys):
    path = write(tmp_path, "a.spec", SPEC)
    (data,) = read(path, energy=8048)
    assert data.q == pytest.approx(units.q_from_two_theta([0.2, 0.5, 0.8], 8048), rel=1e-6)  # the library keeps float32
    assert data.r.tolist() == [400, 900, 16] and data.dr.tolist() == [20, 30, 4] and data.name == "scan 1"
    assert read(path, energy=8048, columns="2theta,counts,-")[0].r.tolist() == [1000] * 3
    with pytest.raises(DataError, match="give energy in eV"):
        read(path)
    with pytest.raises(DataError, match="none of the columns tth, Monitor, Ion is called detector"):
        read(write(tmp_path, "b.spec", SPEC.replace("Detector", "Ion")), energy=8048)
    assert capsys.readouterr().out == ""


@pytest.mark.parametrize("name", ["scan.dat", "scan", "film_003"])
def test_spec_files_have_any_name(tmp_path, name):
    assert read(write(tmp_path, name, SPEC), energy=8048)[0].r.tolist() == [400, 900, 16]


def test_without_the_library_the_message_says_so(tmp_path, monkeypatch):
    monkeypatch.setitem(sys.modules, "xrayutilities", None)
    with pytest.raises(DataError, match="a.ras: .ras files are read through xrayutilities, .*install python3-xray"):
        read(write(tmp_path, "a.ras", RAS))
