// SPDX-License-Identifier: GPL-2.0-or-later
// Optical materials: the tables of one stem, and their values at a photon energy.
//
// A layer names its stem in layer_db, an element in element. Files are named by plain concatenation of stem
// and suffix, so a relative stem counts from the working directory.
#pragma once

#include <cstdint>
#include <string_view>

#include "tolvik/state.h"

namespace tolvik {

/// An interval of photon energies, eV.
struct EnergyRange {
  double lo = -1e100;
  double hi = 1e100;
};

/// Reads and sorts the files of a stem into material, whose kind is set: .ff for an element, else .e, .m and
/// .db. True when .ff or .db gave a row; .e and .m may be missing. The stem is stored in the record in any
/// case.
bool LoadOpticalTable(COpticalTable& material, std::string_view name);

/// Index of the first material of that kind with exactly that name; -1 when there is none or the name is
/// empty.
std::int32_t FindOpticalTable(std::string_view name, const CArray<COpticalTable>& materials,
                              std::int32_t kind);

/// Loads the tables that the layers (Mode::kMaterial) or elements (Mode::kElement) of the state name and that
/// its list lacks, each stem once. False when one failed; the others are loaded all the same. The list is
/// never cleared here.
bool LoadOpticalTables(CState& state);

/// True when the list is empty or every material has rows in its .m table. A .e table does not count.
bool CheckMagnetoOpticalTables(const CArray<COpticalTable>& materials);

/// Writes delta, beta, deltam, betam and the tensor of the material at an energy in eV into layer, zeros
/// where a table is missing. layer.magnetic becomes 1 when the tensor comes from a .e table and 0 when there
/// is none. Moves the cursors of the tables.
void InterpolateOpticalConstants(COpticalTable& material, double energy, CLayer& layer);

/// Writes the atomic scattering factors f1 and f2 of the material at an energy in eV. Moves the cursor.
void InterpolateFormFactors(COpticalTable& material, double energy, double& f1, double& f2);

/// The energies that the .db tables of all layers share, and with magnetisation also the .m tables. Layers
/// without a loaded material are ignored; without any the range is -1e100 to 1e100.
EnergyRange GetOpticalEnergyRange(const CState& state);

}  // namespace tolvik
