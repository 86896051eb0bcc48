// SPDX-License-Identifier: GPL-2.0-or-later
// Fuzzes the reader of column files: its rows are those of the text streams, its order that of neighbour
// exchanges, and no query leaves the table.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "optics/column_table.h"
#include "support/scratch.h"

namespace {

using namespace tolvik;

constexpr std::size_t kPlainRows = 300;  // the exchanges take n² steps
constexpr std::size_t kColumns = 2;

using Row = std::vector<double>;  // energy and values

std::vector<Row> ReadByStreams(const std::string& text) {
  std::vector<Row> rows;
  Row row(kColumns + 1);
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.size() < 2 || line[0] == '#') continue;
    std::istringstream numbers(line);
    for (double& number : row) numbers >> number;
    rows.push_back(row);
  }
  return rows;
}

void SortByExchanges(std::vector<Row>& rows) {
  for (bool moved = true; moved;) {
    moved = false;
    for (std::size_t i = 0; i + 1 < rows.size(); ++i) {
      if (rows[i][0] > rows[i + 1][0]) {
        std::swap(rows[i], rows[i + 1]);
        moved = true;
      }
    }
  }
}

void Compare(const CColumnTable& table, const std::vector<Row>& rows) {
  if (table.count != rows.size()) std::abort();
  for (std::uint32_t i = 0; i < table.count; ++i) {
    if (std::memcmp(&table.rows[i].energy, rows[i].data(), sizeof(double)) != 0) std::abort();
    if (std::memcmp(table.rows[i].values.data, rows[i].data() + 1, kColumns * sizeof(double)) != 0)
      std::abort();
  }
}

void Query(CColumnTable& table, double energy) {
  double values[kColumns];
  InterpolateColumnTable(table, energy, values);
  if (table.count > 0 && table.cursor >= table.count) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const testing::ScratchFolder folder;
  const std::string text(reinterpret_cast<const char*>(data), size);
  CColumnTable table(kColumns);
  ReadColumnTable(table, folder.Write("table", text));
  std::vector<Row> rows = ReadByStreams(text);
  Compare(table, rows);
  SortColumnTable(table);
  if (rows.size() <= kPlainRows) {
    SortByExchanges(rows);
    Compare(table, rows);
  }
  for (const Row& row : rows) {
    Query(table, row[0]);
    Query(table, std::nextafter(row[0], 1e300));
    Query(table, row[0] / 2);
  }
  return 0;
}
