// SPDX-License-Identifier: GPL-2.0-or-later
// Column files: text tables of numbers over the photon energy, one row a line.
#pragma once

#include <span>
#include <string>

#include "tolvik/tables.h"

namespace tolvik {

/// Replaces the rows of table by those of the file at path, in file order; `columns` stays.
///
/// A line of fewer than two characters, or that begins with "#", is skipped; any other gives a row: the
/// energy in eV, then `columns` values, between white space; what follows is ignored. Nothing is checked: a
/// number that is missing at the end of a line keeps the value of the row before (0 in the first row), one
/// that cannot be read is 0. Of a line only the first mebibyte counts. True when the table holds a row
/// afterwards; false when the file cannot be opened, gives no row or does not fit into memory (the table is
/// then empty).
bool ReadColumnTable(CColumnTable& table, const std::string& path);

/// Sorts the rows by ascending energy. Rows of equal energy keep their order. A row whose energy is not a
/// number stays where it is and parts the table: the rows before and behind it are sorted on their own.
void SortColumnTable(CColumnTable& table);

/// Linear interpolation of all columns at an energy in eV; the ends of the table hold beyond it, and a table
/// without rows gives zeros. values: at least `columns` numbers. The walk begins where the last one ended, so
/// neighbouring energies cost next to nothing; table.cursor moves, hence one thread a table.
void InterpolateColumnTable(CColumnTable& table, double energy, std::span<double> values);

/// True when every energy is a number above the one before. In such a table the interpolation is a function
/// of the energy, but for the rounding at the energy of a row, which a walk may reach from above or below.
bool IsColumnTableAscending(const CColumnTable& table);

/// Moves the cursor of an ascending table so that the next walk to energy comes from below, as the first walk
/// of a new table does.
void MoveCursorBelow(CColumnTable& table, double energy);

/// True when the table has rows and energy lies between the first and the last, both included.
bool IsEnergyInColumnTable(const CColumnTable& table, double energy);

/// Writes each row as energy and values with tabs between, six significant digits. False when the file cannot
/// be opened; an existing one is replaced.
bool SaveColumnTable(const CColumnTable& table, const std::string& path);

}  // namespace tolvik
