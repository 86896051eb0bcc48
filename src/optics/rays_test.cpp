// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/rays.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

namespace tolvik {
namespace {

using Numbers = std::array<double, 4>;

void ExpectRay(const Numbers& ray, const Numbers& expected) {
  for (std::size_t i = 0; i < 4; ++i) EXPECT_DOUBLE_EQ(ray[i], expected[i]) << i;
}

TEST(Rays, NormalizeDividesByTheEuclideanNorm) {
  Numbers ray = {1, -2, 2, 4};  // 1 + 4 + 4 + 16 = 25
  NormalizeRay(ray);
  ExpectRay(ray, {0.2, -0.4, 0.4, 0.8});
}

TEST(Rays, NormalizeOfNothingIsNotANumber) {
  Numbers ray = {0, 0, 0, 0};
  NormalizeRay(ray);
  EXPECT_TRUE(std::isnan(ray[0]));
}

TEST(Rays, LettersSetTheVector) {
  Numbers ray = {9, 9, 9, 9};
  SetRayFromLetter(ray, 's');
  ExpectRay(ray, {1, 0, 0, 0});
  SetRayFromLetter(ray, 'p');
  ExpectRay(ray, {0, 0, 1, 0});
  const double half = std::sqrt(0.5);
  SetRayFromLetter(ray, 'l');
  ExpectRay(ray, {half, 0, 0, half});
  SetRayFromLetter(ray, 'r');
  ExpectRay(ray, {half, 0, 0, -half});
}

TEST(Rays, UnknownLetterLeavesTheVector) {
  Numbers ray = {9, 8, 7, 6};
  for (char letter : {'v', 'h', 'S', 'L', ' ', '\0'}) SetRayFromLetter(ray, letter);
  ExpectRay(ray, {9, 8, 7, 6});
}

TEST(Rays, PiRatioSetsAPairOfOppositeHelicity) {
  Numbers ray1{}, ray2{};
  SetRaysFromPiRatio(ray1, ray2, 0.5);
  const double half = std::sqrt(0.5);
  ExpectRay(ray1, {half, 0, 0, half});
  ExpectRay(ray2, {half, 0, 0, -half});
  SetRaysFromPiRatio(ray1, ray2, 0);
  ExpectRay(ray1, {1, 0, 0, 0});
  SetRaysFromPiRatio(ray1, ray2, 0.2);  // (0.8, 0.2) / sqrt(0.68)
  ExpectRay(ray2, {0.8 / std::sqrt(0.68), 0, 0, -0.2 / std::sqrt(0.68)});
}

TEST(Rays, PurePiIsExact) {
  EXPECT_TRUE(IsPiRay(Numbers{0, 0, 1, 0}));
  EXPECT_TRUE(IsPiRay(Numbers{-0.0, 0, 1, 0}));
  EXPECT_FALSE(IsPiRay(Numbers{0, 0, 1 - 1e-16, 0}));
  EXPECT_FALSE(IsPiRay(Numbers{0, 0, 1, 1e-300}));
  EXPECT_FALSE(IsPiRay(Numbers{0, 0, -1, 0}));
  EXPECT_FALSE(IsPiRay(Numbers{1, 0, 0, 0}));
}

TEST(Rays, NamesOfTheLetters) {
  Numbers ray{};
  SetRayFromLetter(ray, 's');
  EXPECT_EQ(GetRayName(ray), "sigma");
  SetRayFromLetter(ray, 'p');
  EXPECT_EQ(GetRayName(ray), "pi");
  SetRayFromLetter(ray, 'l');
  EXPECT_EQ(GetRayName(ray), "left circular");
  SetRayFromLetter(ray, 'r');
  EXPECT_EQ(GetRayName(ray), "right circular");
}

TEST(Rays, CircularNamesHaveATolerance) {
  EXPECT_EQ(GetRayName(Numbers{0.70719, 0, 0, 0.70702}), "left circular");
  EXPECT_EQ(GetRayName(Numbers{0.70719, 0, 0, -0.70702}), "right circular");
  EXPECT_EQ(GetRayName(Numbers{0.70722, 0, 0, 0.707107}), "0.707220 0.000000 0.000000 0.707107");
  EXPECT_EQ(GetRayName(Numbers{0.707107, 0, 0, 0.7070}), "0.707107 0.000000 0.000000 0.707000");
  // The zeros have none.
  EXPECT_EQ(GetRayName(Numbers{0.7071067811865476, 1e-9, 0, 0.7071067811865476}),
            "0.707107 0.000000 0.000000 0.707107");
}

TEST(Rays, OtherNamesAreTheNumbers) {
  EXPECT_EQ(GetRayName(Numbers{0.25, -1, 1e-7, 12345.6789012}), "0.250000 -1.000000 0.000000 12345.678901");
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(GetRayName(Numbers{infinity, 0, 0, -infinity}), "inf 0.000000 0.000000 -inf");
  EXPECT_EQ(GetRayName(Numbers{std::numeric_limits<double>::max(), 0, 0, 0}).size(), 309 + 7 + 3 * 9u);
}

TEST(Rays, RecordsGiveTheirRaysInPlace) {
  CState state;
  EXPECT_EQ(GetRayName(FirstRay(state)), "sigma");
  EXPECT_EQ(GetRayName(SecondRay(state)), "pi");
  SetRayFromLetter(SecondRay(state), 'r');
  EXPECT_DOUBLE_EQ(state.ray2sigmare, std::sqrt(0.5));
  EXPECT_DOUBLE_EQ(state.ray2piim, -std::sqrt(0.5));
  EXPECT_EQ(state.ray1sigmare, 1);

  CDataset dataset;
  EXPECT_EQ(GetRayName(FirstRay(dataset)), "sigma");
  EXPECT_TRUE(IsPiRay(SecondRay(dataset)));
  SetRayFromLetter(FirstRay(dataset), 'l');
  EXPECT_DOUBLE_EQ(dataset.datasetray1piim, std::sqrt(0.5));
  EXPECT_TRUE(IsPiRay(SecondRay(dataset)));
}

}  // namespace
}  // namespace tolvik
