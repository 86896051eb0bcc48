// SPDX-License-Identifier: GPL-2.0-or-later
// Records of the optical tables: one file of columns over the photon energy, and all files of one material.
#pragma once

#include <cstdint>

#include "tolvik/array.h"
#include "tolvik/choices.h"

namespace tolvik {

/// One line of a table: photon energy in eV and the table's `columns` values.
struct CColumnRow {
  double energy = 0;
  CArray<double> values;
};

/// One column file in memory. Copies are deep and keep `columns` and `cursor`.
/// A query moves `cursor`, so two threads need two copies.
class CColumnTable {
 public:
  std::uint32_t count = 0;    ///< rows in use
  std::int32_t capacity = 0;  ///< rows allocated; grows by the rule of CArray
  CColumnRow* rows = nullptr;
  std::int32_t columns = 0;  ///< values per row
  std::uint32_t cursor = 0;  ///< where the last interpolation ended

  CColumnTable() = default;
  explicit CColumnTable(std::int32_t column_count) : columns(column_count) {}
  CColumnTable(const CColumnTable& other) : columns(other.columns), cursor(other.cursor) {
    if (other.count == 0) return;
    rows = new CColumnRow[other.count];
    capacity = static_cast<std::int32_t>(other.count);
    count = other.count;
    try {
      std::copy_n(other.rows, other.count, rows);
    } catch (...) {
      delete[] rows;
      throw;
    }
  }
  CColumnTable(CColumnTable&& other) noexcept { Swap(other); }
  CColumnTable& operator=(const CColumnTable& other) {
    if (this == &other) return *this;
    if (HasShapeOf(other)) {  // a fit copies its table for every evaluation
      std::copy_n(other.rows, other.count, rows);
      columns = other.columns;
      cursor = other.cursor;
      return *this;
    }
    CColumnTable copy(other);
    Swap(copy);
    return *this;
  }
  CColumnTable& operator=(CColumnTable&& other) noexcept {
    Swap(other);
    return *this;
  }
  ~CColumnTable() { delete[] rows; }

  /// Drops all rows; `columns` and `cursor` stay.
  void ClearRows() {
    delete[] rows;
    rows = nullptr;
    count = 0;
    capacity = 0;
  }

  /// Appends a row. Throws std::length_error beyond 2^31 - 1 rows.
  void Append(CColumnRow row) {
    if (count == static_cast<std::uint32_t>(capacity)) Grow();
    rows[count++] = std::move(row);
  }

  void Swap(CColumnTable& other) noexcept {
    std::swap(count, other.count);
    std::swap(capacity, other.capacity);
    std::swap(rows, other.rows);
    std::swap(columns, other.columns);
    std::swap(cursor, other.cursor);
  }

  CColumnRow* begin() { return rows; }
  CColumnRow* end() { return rows + count; }
  const CColumnRow* begin() const { return rows; }
  const CColumnRow* end() const { return rows + count; }

 private:
  // True when the rows of the other table fit into the existing ones, so that nothing has to be allocated.
  bool HasShapeOf(const CColumnTable& other) const {
    const auto same = [](const CColumnRow& a, const CColumnRow& b) {
      return a.values.capacity == b.values.size;
    };
    return static_cast<std::uint32_t>(capacity) == other.count &&
           std::equal(begin(), end(), other.begin(), other.end(), same);
  }

  void Grow() {
    if (capacity == INT32_MAX) throw std::length_error("CColumnTable: too many rows");
    const auto grown =
        static_cast<std::int32_t>(std::min<std::int64_t>(std::int64_t{capacity} * 15 / 10 + 16, INT32_MAX));
    auto* block = new CColumnRow[static_cast<std::size_t>(grown)];
    std::move(begin(), end(), block);
    delete[] rows;
    rows = block;
    capacity = grown;
  }
};

/// All tables of one material, read from files that share a stem.
struct COpticalTable {
  CCharArray name;     ///< the stem as the layer or element gives it
  CColumnTable db{2};  ///< .db: delta, beta
  CColumnTable m{2};   ///< .m: deltam, betam
  CColumnTable e{18};  ///< .e: tensor xx to zz, real before imaginary
  CColumnTable ff{2};  ///< .ff: f1, f2
  double spare[4] = {-1.0, -1.0, -1.0, -1.0};
  std::int32_t kind = TableKind::kLayer;
};

}  // namespace tolvik
