// SPDX-License-Identifier: GPL-2.0-or-later
// The curves of a measured map over energy and qz, gathered from its points.
#pragma once

#include <vector>

#include "tolvik/array.h"
#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik {

/// A measured map as two sets of curves; a point belongs to one curve of each set.
class CMapFile {
 public:
  explicit CMapFile(CState& owner) : state(&owner) {}

  CArray<CDataset> constenergy;  ///< reflectivity over qz, one curve per energy and polarisation
  CArray<CDataset> constqz;      ///< reflectivity over energy, one curve per qz and polarisation
  CArray<CDataset> fitdatasets;  ///< calculated curves of a fit of the map
  CState* state;                 ///< the state that the map belongs to; not owned
};

/// One point of a map. letter: "s", "p", "l" or "r"; "v" means "s", "h" means "p". A point of any other
/// letter has the rays of a default dataset and begins a curve of its own.
struct MapPoint {
  double energy = 0;  ///< eV
  double qz = 0;      ///< Å⁻¹
  double r = 0;       ///< reflectivity
  char letter = 's';
};

/// Adds a point to the first curve of constenergy within 0.01 eV that has its polarisation, or to a new curve
/// with its energy and polarisation. A reflectivity of 0 or less is dropped; NaN is not.
void AddConstEnergyPoint(CMapFile& map, double energy, double qz, double r, char letter);

/// The same for constqz, within 0.001 Å⁻¹ of the first point of a curve.
void AddConstQzPoint(CMapFile& map, double energy, double qz, double r, char letter);

/// Adds many points to an empty map as the two functions above do one after the other, in n log n steps.
void AddMapPoints(CMapFile& map, const std::vector<MapPoint>& points);

/// Sorts constenergy by polarisation (sigma, right circular, pi, left circular), within it by energy, and
/// constqz by the qz of the first point, all ascending. Equal ones keep their order, and a NaN splits a list:
/// the parts before and after it are sorted separately.
void SortMapCurves(CMapFile& map);

/// Drops the curves of constenergy with fewer than 10 points and those of constqz with fewer than 16. Reports
/// each on standard error with its index after the removal of the short ones before it.
void RemoveShortMapCurves(CMapFile& map);

/// Sorts the points of each curve of constenergy by qz and those of constqz by energy. The reflectivity moves
/// with its point; the third number, constant along the curve within the tolerance, keeps the order of the
/// file. A NaN splits a curve as it splits a list.
void SortMapPoints(CMapFile& map);

}  // namespace tolvik
