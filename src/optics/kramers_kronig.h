// SPDX-License-Identifier: GPL-2.0-or-later
// The Kramers-Kronig relation between delta and beta of n = 1 - delta + i beta, on tables over the photon
// energy.
//
//   delta(w) = -(2/π) P∫ E beta(E) / (E² - w²) dE        (de L. Kronig 1926, Kramers 1927; see J. D. Jackson,
//                                                         Classical Electrodynamics, 3rd ed., section 7.10)
//
// Delta falls like 1/w², so the work is done on g = beta E² and D = delta w², and the relation becomes
//
//   D(w) = -(2/π) P∫ E g(E) / (E² - w²) dE + C,          C = (2/π) ∫ g(E) / E dE,
//
// where the constant C, and the contribution from outside the table, is the `offset` of FromTransformForm.
// With beta E² as a sum of triangles ("hats") over the rows, the integral over each triangle has a closed
// form. As the transform is linear, a fit changes one value of beta by the transform of one hat.
//
// A two-column table is in one of two forms:  plain: delta, beta;  transform form: D, g.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tolvik/tables.h"

namespace tolvik {

/// Plain to transform form of beta: column 1 of each row times E². Column 0 stays. Nothing happens unless the
/// table has two columns.
void ToTransformForm(CColumnTable& table);

/// Transform form to plain form: column 1 divided by E², column 0 becomes (column 0 + offset) / E².
/// Nothing happens unless the table has two columns.
void FromTransformForm(CColumnTable& table, double offset);

/// Stores height in column 1 of the row and subtracts from column 0 of every row j 2/π times the integral
/// P∫ E g / (E² - w²) dE over the triangle g of that height with its feet on the neighbouring rows, at
/// w = E_j + 0.01 eV: the shift keeps w off the grid. From |E_index - w| >= 5 eV on the triangle counts as a
/// point of the same area.
/// The first and the last row have no second foot: they, an index outside the table and a table without two
/// columns are not changed. A row that lies 0.01 eV below another gives an infinite value. Column 0
/// accumulates: to change a hat, start from a copy of the table without it.
void KramersKronigHat(CColumnTable& table, std::int32_t index, double height);

/// KramersKronigHat for a fit that adds hats to copies of the same table again and again and changes few
/// heights in between: the last contribution of each hat is kept and reused while its height is the same, at
/// 8 bytes per row. Column 0 equals that of KramersKronigHat in the same order, bit for bit.
///
/// One evaluation: Begin(table), any Add and Set, End(table), with no other change to column 0 in between.
class KramersKronigSum {
 public:
  /// Takes column 0 over. Kept contributions are dropped when the energies are not those of the last
  /// evaluation.
  void Begin(const CColumnTable& table);
  /// KramersKronigHat; End() writes column 0.
  void Add(CColumnTable& table, std::int32_t index, double height);
  /// Column 0 of a row of the table.
  void Set(std::int32_t index, double value) { column_[static_cast<std::size_t>(index)] = value; }
  /// Gives column 0 to the table.
  void End(CColumnTable& table) const;

 private:
  struct Kept {
    double height = 0;
    std::vector<double> transform;  // of each row; empty while there is none
  };
  std::vector<double> energies_;
  std::vector<double> column_;
  std::vector<Kept> kept_;
};

/// Calculates column 0 anew: the transform of all hats, whose heights are in column 1. The first and the last
/// row contribute nothing, and no tail is added outside the table. Nothing happens unless the table has two
/// columns; with fewer than three rows column 0 is zero.
void KramersKronigAll(CColumnTable& table);

/// Removes the rows with lo < E < hi, strictly. `cursor` stays, even if it is then beyond the last row.
void CutColumnTable(CColumnTable& table, double lo, double hi);

}  // namespace tolvik
