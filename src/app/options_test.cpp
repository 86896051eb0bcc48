// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/options.h"

#include <gtest/gtest.h>

#include <vector>

namespace tolvik {
namespace {

struct Scan {
  ScanResult result;
  Options options;
  std::string out;
  std::string err;
};

Scan ScanWords(std::vector<const char*> words) {
  words.insert(words.begin(), "Tolvik");
  Scan scan{};
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  scan.result = ScanArguments(static_cast<int>(words.size()), words.data(), scan.options);
  scan.out = ::testing::internal::GetCapturedStdout();
  scan.err = ::testing::internal::GetCapturedStderr();
  return scan;
}

TEST(Options, CollectsCommandsAndNamesInOrder) {
  const Scan scan = ScanWords({"b.state", "-refl", "a.state", "-dicrefl"});
  EXPECT_EQ(scan.result, ScanResult::go_on);
  EXPECT_EQ(scan.options.flags, (std::set<std::string>{"-refl", "-dicrefl"}));
  EXPECT_EQ(scan.options.names, (std::vector<std::string>{"b.state", "a.state"}));
}

TEST(Options, IgnoresUnknownOptionsAndMatchesExactly) {
  const Scan scan = ScanWords({"-reflx", "-REFL", "--refl", "-", "a.state"});
  EXPECT_EQ(scan.result, ScanResult::go_on);
  EXPECT_TRUE(scan.options.flags.empty());
  EXPECT_EQ(scan.options.names, (std::vector<std::string>{"a.state"}));
}

TEST(Options, VersionActsWhenTheScanReachesIt) {
  const Scan scan = ScanWords({"-refl", "-v", "-test"});
  EXPECT_EQ(scan.result, ScanResult::failed);
  EXPECT_EQ(scan.out, "Tolvik version 1.9.2 (build 58)\n");
}

TEST(Options, TestEndsTheScan) {
  EXPECT_EQ(ScanWords({"-test", "-v"}).result, ScanResult::done);
}

TEST(Options, BadMapBeforeVersionGivesTheUsage) {
  const Scan scan = ScanWords({"-map", "-v"});
  EXPECT_EQ(scan.result, ScanResult::usage);
  EXPECT_EQ(scan.out, "");
}

TEST(Options, MapTakesEightWordsAndReportsThem) {
  const Scan scan = ScanWords({"-map", "E", "Q", "700", "800.5", "0", "0.5", "0x10", "010", "a.state"});
  ASSERT_EQ(scan.result, ScanResult::go_on);
  const CMapRange& range = scan.options.maprange;
  EXPECT_EQ(range.min1, 700);
  EXPECT_EQ(range.max1, 800.5);
  EXPECT_EQ(range.min2, 0);
  EXPECT_EQ(range.max2, 0.5);
  EXPECT_EQ(range.n1, 16);  // "%i" reads hexadecimal
  EXPECT_EQ(range.n2, 8);   // and octal numbers
  EXPECT_EQ(scan.options.names, (std::vector<std::string>{"a.state"}));
  EXPECT_EQ(
      scan.err,
      "#min1 = 700.000000\n#max2 = 800.500000\n#min1 = 0.000000\n#max2 = 0.500000\n#n1 = 16\n#n2 = 8\n");
  EXPECT_EQ(scan.out, "");
}

TEST(Options, MapLeavesWordsThatDoNotParse) {
  const Scan scan = ScanWords({"-map", "E", "Q", "x", "", "1e", "-", "n", "", "a.state"});
  ASSERT_EQ(scan.result, ScanResult::go_on);
  EXPECT_EQ(scan.options.maprange.min1, 0);
  EXPECT_EQ(scan.options.maprange.n1, 1);
  EXPECT_EQ(scan.options.maprange.n2, 1);
}

TEST(Options, MapNeedsElevenArguments) {
  EXPECT_EQ(ScanWords({"-map", "E", "Q", "1", "2", "3", "4", "5", "6"}).result, ScanResult::usage);
}

TEST(Options, MapAtTheEndOfALongLineIsBadForm) {
  EXPECT_EQ(ScanWords({"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "-map"}).result, ScanResult::usage);
  const Scan scan = ScanWords({"a", "b", "c", "d", "e", "f", "g", "h", "-map", "E", "Q"});
  EXPECT_EQ(scan.result, ScanResult::go_on);  // the missing numbers keep their values
  EXPECT_EQ(scan.options.maprange.n1, 1);
}

TEST(Options, MapTypesAreMatchedExactly) {
  EXPECT_EQ(ScanWords({"-map", "e", "Q", "1", "2", "3", "4", "5", "6", "a"}).result, ScanResult::usage);
  EXPECT_EQ(ScanWords({"-map", "E", "q", "1", "2", "3", "4", "5", "6", "a"}).result, ScanResult::usage);
}

TEST(Options, ConvertWithoutANameGivesTheUsage) {
  EXPECT_EQ(ScanWords({"-convert"}).result, ScanResult::usage);
}

}  // namespace
}  // namespace tolvik
