// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tolvik::analysis {

/// Numbers in rows, one row after the other.
struct Matrix {
  std::size_t rows = 0, columns = 0;
  std::vector<double> values;

  Matrix() = default;
  Matrix(std::size_t row_count, std::size_t column_count, double value = 0)
      : rows(row_count), columns(column_count), values(row_count * column_count, value) {}

  double& operator()(std::size_t i, std::size_t j) { return values[i * columns + j]; }
  double operator()(std::size_t i, std::size_t j) const { return values[i * columns + j]; }
  std::span<double> Row(std::size_t i) { return {values.data() + i * columns, columns}; }
  std::span<const double> Row(std::size_t i) const { return {values.data() + i * columns, columns}; }
};

}  // namespace tolvik::analysis
