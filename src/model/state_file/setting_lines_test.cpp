// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/state_file/setting_lines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tolvik {
namespace {

// All settings of a text as "key|value|raw".
std::vector<std::string> Settings(std::string_view text) {
  std::vector<std::string> found;
  SettingLines lines(text);
  SettingLine line;
  while (lines.Next(line)) {
    found.push_back(std::string(line.key) + "|" + std::string(line.value) + "|" + std::string(line.raw));
  }
  return found;
}

using Expected = std::vector<std::string>;

TEST(SettingLines, BlanksAreRemovedEverywhereButInTheRawValue) {
  EXPECT_EQ(Settings("key=value"), Expected{"key|value|value"});
  EXPECT_EQ(Settings("  k e y   =  a b  c "), Expected{"key|abc|  a b  c "});
}

TEST(SettingLines, TabsStay) {
  EXPECT_EQ(Settings("\tkey =\t1 "), Expected{"\tkey|\t1|\t1 "});
}

TEST(SettingLines, NumberSignEndsTheValue) {
  EXPECT_EQ(Settings("key = 5#comment"), Expected{"key|5| 5"});
  EXPECT_EQ(Settings("key = 5 # comment = 6"), Expected{"key|5| 5 "});
  EXPECT_EQ(Settings("key = # nothing"), Expected{"key|| "});
}

TEST(SettingLines, NumberSignEndsTheKeyAndTheLine) {
  EXPECT_EQ(Settings("key # = 5\n#key = 5\n  # key = 5\n"), Expected{});
}

TEST(SettingLines, LinesWithoutEqualsAreNone) {
  EXPECT_EQ(Settings("\n\n   \nkey value\n"), Expected{});
}

TEST(SettingLines, LaterEqualsBelongToTheValue) {
  EXPECT_EQ(Settings("scriptline = a == b"), Expected{"scriptline|a==b| a == b"});
}

TEST(SettingLines, CarriageReturnsAreDroppedEverywhere) {
  EXPECT_EQ(Settings("k\rey\r = a\rb\r\r\n\r\n\r#x=1\r\n"), Expected{"key|ab| ab"});
}

TEST(SettingLines, LastLineNeedsNoLineFeed) {
  EXPECT_EQ(Settings("a=1\nb=2"), (Expected{"a|1|1", "b|2|2"}));
}

TEST(SettingLines, AnEmptyKeyIsAKey) {
  EXPECT_EQ(Settings(" = 1"), Expected{"|1| 1"});
}

TEST(SettingLines, NulBytesStay) {
  const std::string text("k\0ey=1\0 2\n", 10);
  EXPECT_EQ(Settings(text), Expected{std::string("k\0ey|1\0002|1\0 2", 13)});
}

TEST(SettingLines, RestBeginsBehindTheLine) {
  SettingLines lines("a=1\n  rest\nb=2\n");
  SettingLine line;
  ASSERT_TRUE(lines.Next(line));
  EXPECT_EQ(lines.Rest(), "  rest\nb=2\n");
  lines.Skip(7);
  ASSERT_TRUE(lines.Next(line));
  EXPECT_EQ(line.key, "b");
  EXPECT_FALSE(lines.Next(line));
  EXPECT_EQ(lines.Rest(), "");
}

}  // namespace
}  // namespace tolvik
