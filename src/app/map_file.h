// SPDX-License-Identifier: GPL-2.0-or-later
// The text file of a measured map, one line per point: energy in eV, qz in Å⁻¹, reflectivity, and the letter
// of the polarisation, which also applies to the lines after it.
#pragma once

#include <istream>
#include <string>
#include <vector>

#include "app/map_curves.h"

namespace tolvik {

/// Reads the points of a map. Lines of five characters or fewer and lines that begin with "#" or "--" are
/// ignored. A number that cannot be read is 0; a line without a letter takes the letter of the line before,
/// "s" at first. Numbers are read as by scanf: also "nan", "inf" and hexadecimal.
std::vector<MapPoint> ReadMapPoints(std::istream& in);

/// Fills the map from a file: curves sorted, short ones dropped, points in ascending order. Reports to
/// standard error. A file that cannot be opened ends the process with exit value 1.
void LoadMapFile(CMapFile& map, const std::string& path);

/// Prints the ranges of energy and qz to standard error, and the points of all curves of constenergy that are
/// not purely pi to standard output as "energy qz reflectivity".
void PrintMapFile(const CMapFile& map);

}  // namespace tolvik
