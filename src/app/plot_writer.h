// SPDX-License-Identifier: GPL-2.0-or-later
// A gnuplot script that draws the curves of a map, one picture for each energy.
#pragma once

#include "app/map_curves.h"

namespace tolvik {

/// Writes "summary/refl.txt", the curves of constenergy as blocks of "qz reflectivity", each value as it is
/// compared with a calculation: (value + datasettranslator) * datasetmultiplicator; and "summary/plot.gp",
/// which draws all polarisations of each energy into "pic0000.png" and so on when gnuplot runs in "summary".
/// A curve without points is left out. A file that cannot be opened ends the process with a message on
/// standard error and exit value 1; each file is replaced as a whole. No option calls this.
void WriteSummaryPlot(const CMapFile& map);

}  // namespace tolvik
