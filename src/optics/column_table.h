// SPDX-License-Identifier: GPL-2.0-or-later
// Column files: text tables of numbers over the photon energy, one row per line.
#pragma once

#include <span>
#include <string>

#include "tolvik/tables.h"

namespace tolvik {

/// Replaces the rows of table by those of the file at path, in file order; `columns` stays.
///
/// A line of fewer than two characters, or that begins with "#", is skipped; any other gives a row: the
/// energy in eV, then `columns` values, between white space; further text is ignored. Nothing is checked: a
/// number that is missing at the end of a line keeps the value of the row before (0 in the first row), one
/// that cannot be read is 0. Only the first mebibyte of a line is read. True when the table holds a row
/// afterwards; false when the file cannot be opened, gives no row or does not fit into memory (the table is
/// then empty).
bool ReadColumnTable(CColumnTable& table, const std::string& path);

/// Sorts the rows by ascending energy. Rows of equal energy keep their order. A row with energy NaN keeps its
/// place and splits the table: the rows before and after it are sorted separately.
void SortColumnTable(CColumnTable& table);

/// Linear interpolation of all columns at an energy in eV; beyond the ends of the table the end values hold,
/// and a table without rows gives zeros. values: at least `columns` numbers. The search begins where the last
/// one ended, so neighbouring energies are cheap; table.cursor moves, so a table is for one thread only.
void InterpolateColumnTable(CColumnTable& table, double energy, std::span<double> values);

/// True when every energy is a number above the one before. In such a table the interpolation depends on the
/// energy only, except for the rounding at the energy of a row, which a search may reach from above or below.
bool IsColumnTableAscending(const CColumnTable& table);

/// Moves the cursor of an ascending table so that the next search for energy comes from below, as the first
/// search in a new table does.
void MoveCursorBelow(CColumnTable& table, double energy);

/// True when the table has rows and energy lies between the first and the last, both included.
bool IsEnergyInColumnTable(const CColumnTable& table, double energy);

/// Writes each row as energy and values with tabs between, six significant digits. False when the file cannot
/// be opened; an existing one is replaced.
bool SaveColumnTable(const CColumnTable& table, const std::string& path);

}  // namespace tolvik
