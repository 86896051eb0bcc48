// SPDX-License-Identifier: GPL-2.0-or-later
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <vector>

#include "optics/column_table.h"
#include "support/scratch.h"

namespace tolvik {
namespace {

using Rows = std::vector<std::vector<double>>;  // energy and values

Rows RowsOf(const CColumnTable& table) {
  Rows rows;
  for (const CColumnRow& row : table) {
    std::vector<double> all{row.energy};
    all.insert(all.end(), row.values.begin(), row.values.end());
    rows.push_back(all);
  }
  return rows;
}

Rows ReadText(const std::string& text, std::int32_t columns = 2) {
  const testing::ScratchFolder folder;
  CColumnTable table(columns);
  const bool read = ReadColumnTable(table, folder.Write("table", text));
  EXPECT_EQ(read, table.count > 0);
  return RowsOf(table);
}

// The rows by the text streams that define them.
Rows ReadByStreams(const std::string& text, std::size_t columns) {
  Rows rows;
  std::vector<double> row(columns + 1);
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.size() < 2 || line[0] == '#') continue;
    std::istringstream numbers(line);
    for (double& number : row) numbers >> number;
    rows.push_back(row);
  }
  return rows;
}

TEST(ReadColumnTable, TakesRowsInFileOrderAndIgnoresTheRest) {
  EXPECT_EQ(ReadText("# energy delta beta\n800 1e-3 2e-4 and more\n700\t-3.5  4 5 6\n"),
            (Rows{{800, 1e-3, 2e-4}, {700, -3.5, 4}}));
}

TEST(ReadColumnTable, LastLineNeedsNoNewline) {
  EXPECT_EQ(ReadText("1 2 3\n4 5 6"), (Rows{{1, 2, 3}, {4, 5, 6}}));
}

TEST(ReadColumnTable, SkipsLinesOfOneCharacterAndEmptyOnes) {
  EXPECT_EQ(ReadText("7\n\n1 2 3\n8\n"), (Rows{{1, 2, 3}}));
  EXPECT_EQ(ReadText("1 2 3\n8"), (Rows{{1, 2, 3}}));
}

TEST(ReadColumnTable, WindowsLineEndsAreWhiteSpace) {
  EXPECT_EQ(ReadText("1 2 3\r\n\r\n4 5 6\r\n"), (Rows{{1, 2, 3}, {4, 5, 6}}));
}

TEST(ReadColumnTable, OnlyTheFirstCharacterMakesAComment) {
  // A blank before the sign makes a data row, whose energy cannot be read and is 0.
  EXPECT_EQ(ReadText("#1 2 3\n1 2 3\n #4 5 6\n"), (Rows{{1, 2, 3}, {0, 2, 3}}));
}

TEST(ReadColumnTable, ShortRowsKeepWhatTheRowBeforeHad) {
  EXPECT_EQ(ReadText("10\n"), (Rows{{10, 0, 0}}));
  EXPECT_EQ(ReadText("1 2 3\n4 5\n66\n   \n7 8 9\n"),
            (Rows{{1, 2, 3}, {4, 5, 3}, {66, 5, 3}, {66, 5, 3}, {7, 8, 9}}));
}

TEST(ReadColumnTable, NumbersThatCannotBeReadAreZeroAndEndTheRow) {
  EXPECT_EQ(ReadText("1 2 3\n4 x 6\n"), (Rows{{1, 2, 3}, {4, 0, 3}}));
  EXPECT_EQ(ReadText("1 nan 3\ninf 5 6\n"), (Rows{{1, 0, 0}, {0, 0, 0}}));
  // Beyond the range of a double a stream gives the largest one.
  EXPECT_EQ(ReadText("1 1e999 3\n"), (Rows{{1, std::numeric_limits<double>::max(), 0}}));
}

TEST(ReadColumnTable, MissingEmptyAndCommentFilesFail) {
  const testing::ScratchFolder folder;
  CColumnTable table(2);
  table.Append({1.0, {}});
  EXPECT_FALSE(ReadColumnTable(table, folder.Path("missing")));
  EXPECT_EQ(table.count, 0u);
  EXPECT_EQ(table.columns, 2);
  EXPECT_FALSE(ReadColumnTable(table, folder.Write("empty", "")));
  EXPECT_FALSE(ReadColumnTable(table, folder.Write("comments", "# a\n\n#b\n1\n")));
  EXPECT_FALSE(ReadColumnTable(table, folder.Path(".")));  // a folder
}

TEST(ReadColumnTable, ReplacesTheRowsOfTheTable) {
  const testing::ScratchFolder folder;
  CColumnTable table(1);
  EXPECT_TRUE(ReadColumnTable(table, folder.Write("a", "1 2\n3 4\n")));
  EXPECT_TRUE(ReadColumnTable(table, folder.Write("b", "5 6\n")));
  EXPECT_EQ(RowsOf(table), (Rows{{5, 6}}));
}

TEST(ReadColumnTable, RowsAreTheSameAcrossReadBlocks) {
  std::string text;
  Rows expected;
  for (int i = 0; i < 60000; ++i) {
    text += std::to_string(i) + " " + std::to_string(2 * i) + "\n";
    expected.push_back({double(i), 2.0 * i});
  }
  EXPECT_EQ(ReadText(text, 1), expected);
}

TEST(ReadColumnTable, AVeryLongLineIsOneRow) {
  const std::string junk(5 << 20, 'x');
  EXPECT_EQ(ReadText("1 2 3 " + junk + "\n4 5 6\n"), (Rows{{1, 2, 3}, {4, 5, 6}}));
  EXPECT_EQ(ReadText("1 2 3 " + junk), (Rows{{1, 2, 3}}));
}

TEST(ReadColumnTable, AgreesWithTextStreamsOnAnyText) {
  const std::vector<std::string> pieces = {"1",
                                           "2.5",
                                           "-3e-4",
                                           "+7",
                                           "+-1",
                                           "--1",
                                           ".5",
                                           "5.",
                                           ".",
                                           "-",
                                           "+",
                                           "1e",
                                           "1e+",
                                           "1E5",
                                           "e5",
                                           "inf",
                                           "-inf",
                                           "nan",
                                           "-nan",
                                           "0x1p3",
                                           "1,000",
                                           "1.2.3",
                                           "1-2",
                                           "1e-400",
                                           "1e400",
                                           "-1e400",
                                           "#",
                                           "abc",
                                           "00012",
                                           "-0",
                                           "4.9e-324",
                                           "2.2250738585072011e-308",
                                           " ",
                                           " ",
                                           " ",
                                           " ",
                                           "\t",
                                           "\r",
                                           "\v",
                                           "\f",
                                           "\n",
                                           "\n",
                                           std::string("\0", 1),
                                           "12345678901234567890123456789012345678901234567890",
                                           "0.1000000000000000055511151231257827"};
  std::mt19937 random(99);
  for (int round = 0; round < 4000; ++round) {
    std::string text;
    for (auto i = random() % 30; i > 0; --i) {
      text += pieces[random() % pieces.size()];
      if (random() % 2) text += ' ';
    }
    const Rows ours = ReadText(text);
    const Rows theirs = ReadByStreams(text, 2);
    ASSERT_EQ(ours.size(), theirs.size()) << text;
    for (std::size_t i = 0; i < ours.size(); ++i) {  // by bits, so that -0 counts
      ASSERT_EQ(std::memcmp(ours[i].data(), theirs[i].data(), 3 * sizeof(double)), 0) << text;
    }
  }
}

}  // namespace
}  // namespace tolvik
