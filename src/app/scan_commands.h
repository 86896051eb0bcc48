// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that calculate over the photon energy, from the optical tables.
#pragma once

#include <cstdint>

#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik {

/// -escan: loads the tables again and calculates the energy scan of the state, cut to the energies that all
/// tables share. Prints messages about missing tables only: the curve itself is dropped.
void CalcEnergyScanCommand(CState& state);

/// -map: calculates the reflectivity over energy and qz and prints "energy qz R" for each point, energy
/// running fastest, and an empty line after each qz. range is cut to the energies that all tables share.
void CalcMapCommand(CState& state, CMapRange& range);

/// Calculates the map: loads the tables that the state lacks, narrows range, builds the grid and calculates.
/// Returns ReturnCode::kTablesMissing after a message on standard error, else the code of the scan. Throws
/// std::length_error or std::bad_alloc for a map that does not fit into memory.
std::int32_t CalcMap(CState& state, CMapRange& range, CSolution& solution);

/// Fills dataset_qz and dataset_eng with the n1 * n2 points of range, point j * n1 + i at energy i and qz j,
/// and sizes dataset_R0. An axis of one point divides 0 by 0, so its coordinate is NaN. Throws as CalcMap.
void BuildMapGrid(const CMapRange& range, CSolution& solution);

/// The points of -escan without a measurement: engscanqz at energies from start up to end, in steps of a
/// numberofpoints-th. A step that does not lead upwards ends the scan at its first point. Throws as CalcMap.
void BuildScanGrid(const CState& state, double start, double end, CSolution& solution);

}  // namespace tolvik
