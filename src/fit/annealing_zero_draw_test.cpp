// SPDX-License-Identifier: GPL-2.0-or-later
// The annealing step on draws that are exactly 0, whose logarithm is minus infinity.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/toy_fit.h"

namespace tolvik {
namespace {

using testing::Point;
using testing::SumOfSquares;
using testing::ToyFit;

constexpr std::uint32_t kWords = 624;

std::uint32_t Fold(std::uint32_t word) {
  return word ^ (word >> 30);
}

// The key whose seeding leaves 0 in all words but the first: the two passes of M. Matsumoto and T.
// Nishimura's init_by_array (mt19937ar, 2002) walked backwards.
std::vector<std::uint32_t> KeyOfZeros() {
  std::vector<std::uint32_t> begun(kWords), mixed(kWords), key(kWords);
  begun[0] = 19650218u;
  for (std::uint32_t i = 1; i < kWords; ++i) begun[i] = 1812433253u * Fold(begun[i - 1]) + i;
  // second pass: word i ends as (mixed[i] ^ Fold(word before) * 1566083941) - i = 0; word 1 is the last one
  mixed[1] = 1;
  mixed[2] = 2u ^ (Fold(mixed[1]) * 1566083941u);
  for (std::uint32_t i = 3; i < kWords; ++i) mixed[i] = i;
  // first pass, which goes over word 1 twice; its first step takes a key of 0
  std::uint32_t before = begun[1] ^ (Fold(begun[0]) * 1664525u);
  const std::uint32_t first = before;
  for (std::uint32_t i = 2; i < kWords; ++i) {
    key[i - 1] = mixed[i] - (begun[i] ^ (Fold(before) * 1664525u)) - (i - 1);
    before = mixed[i];
  }
  key[kWords - 1] = mixed[1] - (first ^ (Fold(before) * 1664525u)) - (kWords - 1);
  return key;
}

// The next 226 draws of all objects are 0.
void DrawZerosFromNowOn() {
  const std::vector<std::uint32_t> key = KeyOfZeros();
  MTRand_int32 stream;
  stream.Seed(key.data(), static_cast<int>(kWords));
  ASSERT_NE(stream.Draw(), 0u);  // the first word always has its upper bit
}

// The simplex (4, 4), (6, 4), (4, 6) with the errors 32, 52, 52, and only zeros to draw.
void Prepare(ToyFit& fit, double temperature) {
  fit.Vary(4, 2).Vary(4, 2).Start();
  fit.SimplexStep();  // builds and does not move
  fit.evaluated.clear();
  fit.fittemp = temperature;
  DrawZerosFromNowOn();
}

// 0 times minus infinity is NaN: every comparison fails, so vertex 0 counts as the highest and its
// reflection, (14, 14) - 2 (4, 4), is recorded but not kept.
TEST(Annealing, DrawOfZeroAtTemperatureZeroMovesNothing) {
  ToyFit fit(SumOfSquares);
  Prepare(fit, 0);
  fit.AnnealingStep();
  EXPECT_EQ(fit.evaluated, (std::vector<Point>{{6, 6}}));
  EXPECT_EQ(fit.Errors(), (Point{32, 52, 52}));
  EXPECT_EQ(fit.Vertex(0), (Point{4, 4}));
  EXPECT_EQ(fit.Sum(), (Point{14, 14}));
  EXPECT_EQ(fit.lasterror, 72);
  EXPECT_EQ(fit.besterror, 72);  // of trials only
}

// All vertices are infinitely bad and every trial infinitely good. Ties: vertex 1 stays the highest. Its
// reflection (14, 14) - 2 (6, 4) = (2, 6) is taken with its true error; the expansion after it,
// -(10, 16) / 2 + 5 / 2 (2, 6) = (0, 7), is no better than minus infinity.
TEST(Annealing, DrawOfZeroAboveTemperatureZeroIsInfinite) {
  ToyFit fit(SumOfSquares);
  Prepare(fit, 1);
  fit.AnnealingStep();
  EXPECT_EQ(fit.evaluated, (std::vector<Point>{{2, 6}, {0, 7}}));
  EXPECT_EQ(fit.Errors(), (Point{32, 40, 52}));
  EXPECT_EQ(fit.Vertex(1), (Point{2, 6}));
  EXPECT_EQ(fit.lasterror, 49);
  EXPECT_EQ(fit.besterror, 40);
}

}  // namespace
}  // namespace tolvik
