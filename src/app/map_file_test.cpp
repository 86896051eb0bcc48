// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/map_file.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <sstream>

#include "support/scratch.h"

namespace tolvik {
namespace {

using ::testing::internal::CaptureStderr;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStderr;
using ::testing::internal::GetCapturedStdout;

std::vector<MapPoint> Points(const std::string& text) {
  std::istringstream in(text);
  return ReadMapPoints(in);
}

std::string Line(double energy, double qz, double r, const std::string& letter = "s") {
  return std::to_string(energy) + " " + std::to_string(qz) + " " + std::to_string(r) + " " + letter + "\n";
}

// Both streams of printing the map of that text.
struct Printed {
  std::string out, err;
  std::int32_t curves;
};
Printed Print(const std::string& text) {
  const testing::ScratchFolder folder;
  CState state;
  CMapFile map(state);
  CaptureStderr();
  CaptureStdout();
  LoadMapFile(map, folder.Write("Map.dat", text));
  PrintMapFile(map);
  const std::string out = GetCapturedStdout();
  return {out, GetCapturedStderr(), map.constenergy.size};
}

TEST(ReadMapPoints, PassesOverCommentsAndShortLines) {
  EXPECT_EQ(Points("# 700 0.1 0.5 s\n-- 700 0.1 0.5 s\n1 1 1\n\n     \n-").size(), 0u);
  EXPECT_EQ(Points(" # 700\n-7 1 1\n1 1 1 \n").size(), 3u);
}

TEST(ReadMapPoints, KeepsTheLetterOfTheLineBefore) {
  const auto points = Points("700 0.1 0.5\n700 0.1 0.5 left\n700 0.1 0.5\n700 0.1\n700 0.1 0.5 p");
  ASSERT_EQ(points.size(), 5u);
  EXPECT_EQ(points[0].letter, 's');
  EXPECT_EQ(points[1].letter, 'l');
  EXPECT_EQ(points[2].letter, 'l');
  EXPECT_EQ(points[3].letter, 'l');
  EXPECT_EQ(points[3].r, 0);  // not the number of the line before
  EXPECT_EQ(points[4].letter, 'p');
}

TEST(ReadMapPoints, TakesWhatScanfTakes) {
  const auto points = Points("0x1.5ep9 0.1 nan s\n7e2 inf 1e400 s\n7.5d2 0.1 0.5 s\n\t 700\t.1\v5 p\r\n");
  ASSERT_EQ(points.size(), 4u);
  EXPECT_EQ(points[0].energy, 700);
  EXPECT_TRUE(std::isnan(points[0].r));
  EXPECT_TRUE(std::isinf(points[1].qz));
  EXPECT_TRUE(std::isinf(points[1].r));
  EXPECT_EQ(points[2].energy, 7.5);  // stops at the "d"
  EXPECT_EQ(points[2].r, 0);
  EXPECT_EQ(points[3].r, 5);
  EXPECT_EQ(points[3].letter, 'p');
}

TEST(ReadMapPoints, SurvivesBytesOfAnyKind) {
  std::string line(3000000, '7');
  line += " 0.1 0.5 s\n";
  const auto points = Points(line + std::string("700\0 0.1 0.5 s\n", 15) + "\xff\xfe\xfd\xfc\xfb\xfa\n");
  ASSERT_EQ(points.size(), 3u);
  EXPECT_TRUE(std::isinf(points[0].energy));
  EXPECT_EQ(points[1].r, 0);
  EXPECT_EQ(points[2].energy, 0);
}

TEST(LoadMapFile, EndsTheProcessWithoutTheFile) {
  CState state;
  CMapFile map(state);
  EXPECT_EXIT(LoadMapFile(map, "/nowhere/Map.dat"), ::testing::ExitedWithCode(1),
              "^Error: Could not open file\n$");
}

// A folder opens like a file, but cannot be read.
TEST(LoadMapFile, EndsTheProcessForAFolder) {
  CState state;
  CMapFile map(state);
  EXPECT_EXIT(LoadMapFile(map, "/"), ::testing::ExitedWithCode(1), "^Error: Could not open file\n$");
}

TEST(LoadMapFile, DropsFewPointsAndPrintsNothing) {
  std::string text;
  for (int i = 0; i < 9; ++i) text += Line(700, 0.1 + 0.01 * i, 0.5);
  const Printed printed = Print(text);
  EXPECT_EQ(printed.out, "");
  EXPECT_EQ(printed.curves, 0);
  // 1e99 and -1e99 with all their digits, as printf gives them
  char digits[200];
  std::snprintf(digits, sizeof digits, "%lf", 1e99);
  const std::string large = digits;
  std::string expected =
      "Number of points: 9\nNumber of Reflectivities found: 1\ndelete const energy numnber 0\n";
  for (int i = 0; i < 9; ++i) expected += "delete const qz numnber 0\n";
  expected += "minimum energy = " + large + " eV\nmaximum energy = -" + large + " eV\nminimum qz = " + large +
              " 1/A\nmaximum qz = -" + large + " 1/A\n";
  EXPECT_EQ(printed.err, expected);
}

TEST(LoadMapFile, CountsTheLinesItDrops) {
  std::string text = "# energy qz r\n";
  for (int i = 0; i < 12; ++i) text += Line(700, 0.25 - 0.01 * i, i == 3 ? 0 : i == 4 ? -0.5 : 0.5);
  const Printed printed = Print(text);
  EXPECT_TRUE(printed.err.starts_with("Number of points: 12\nNumber of Reflectivities found: 1\n"))
      << printed.err;
  EXPECT_NE(printed.err.find("\n0: n=10, e=700.000000, p=sigma\n"), std::string::npos) << printed.err;
  EXPECT_TRUE(printed.out.starts_with("7.000000e+02 1.400000e-01 5.000000e-01\n")) << printed.out;
}

TEST(LoadMapFile, KeepsTheFirstEnergyOfNearOnes) {
  std::string text;
  for (int i = 0; i < 10; ++i)
    text += Line(i == 0 ? 700.004 : 699.998 + 0.001 * i, 0.1 + 0.01 * i, 0.5, i % 2 == 0 ? "s" : "v");
  const Printed printed = Print(text);
  EXPECT_NE(printed.err.find("\n0: n=10, e=700.004000, p=sigma\n"), std::string::npos) << printed.err;
}

TEST(PrintMapFile, LeavesPurePiOutButCountsItsRange) {
  std::string text;
  for (int i = 0; i < 10; ++i)
    text += Line(700, 0.1 + 0.01 * i, 0.5, "l") + Line(800, 0.3 + 0.01 * i, 0.25, "h");
  const Printed printed = Print(text);
  EXPECT_NE(printed.err.find("0: n=10, e=800.000000, p=pi\n1: n=10, e=700.000000, p=left circular\n"
                             "minimum energy = 700.000000 eV\nmaximum energy = 800.000000 eV\n"
                             "minimum qz = 0.100000 1/A\nmaximum qz = 0.390000 1/A\n"),
            std::string::npos)
      << printed.err;
  EXPECT_EQ(printed.out.find("8.0"), std::string::npos);
  EXPECT_TRUE(printed.out.starts_with("7.000000e+02 1.000000e-01 5.000000e-01\n"));
  EXPECT_EQ(std::count(printed.out.begin(), printed.out.end(), '\n'), 10);
}

// A quadratic search, sort or removal would take minutes for this one.
TEST(LoadMapFile, TakesAHostileMapInReasonableTime) {
  std::string text;
  for (int i = 0; i < 40000; ++i)
    text += Line(9000 - 0.4 * i, 0.9 - 2e-5 * i, 0.5, "xsx" + std::to_string(i % 3));
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(Print(text).out, "");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(60));
}

}  // namespace
}  // namespace tolvik
