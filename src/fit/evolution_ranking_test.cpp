// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/evolution.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <vector>

#include "support/searches.h"

namespace tolvik {
namespace {

using testing::MakeSearch;

CEvolution MakeRanked(std::initializer_list<double> errors) {
  CEvolution evolution(MakeSearch(0));
  for (const double error : errors) evolution.errors.Append(error);
  return evolution;
}

std::vector<std::int32_t> RankingOf(const CEvolution& evolution) {
  return {evolution.ranking.begin(), evolution.ranking.end()};
}

TEST(Ranking, BestFirstAndTiesInOrder) {
  CEvolution evolution = MakeRanked({3, 1, 2, 1, 0, 3});
  evolution.SortRanking();
  EXPECT_EQ(RankingOf(evolution), (std::vector<std::int32_t>{4, 1, 3, 2, 0, 5}));
}

TEST(Ranking, ErrorThatIsNoNumberIsExchangedByEveryPass) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  // A pair with a NaN is always exchanged: of two entries the two passes restore the order.
  CEvolution two = MakeRanked({kNaN, 1});
  two.SortRanking();
  EXPECT_EQ(RankingOf(two), (std::vector<std::int32_t>{0, 1}));
  // By hand, N the NaN: 2 N 1, N 2 1, N 1 2 | 1 N 2, 1 2 N | 1 2 N, 1 N 2.
  CEvolution three = MakeRanked({2, kNaN, 1});
  three.SortRanking();
  EXPECT_EQ(RankingOf(three), (std::vector<std::int32_t>{2, 1, 0}));
}

TEST(Ranking, QuicksortOrdersByError) {
  CEvolution evolution(MakeSearch(0));
  MTRand_int32 stream;
  stream.Seed(3u);
  for (std::int32_t i = 0; i < 500; ++i) {
    evolution.errors.Append(stream.Draw() % 100);
    evolution.ranking.Append(499 - i);
  }
  evolution.SortRankingQuick();
  std::vector<bool> seen(500);
  for (std::int32_t i = 0; i < 500; ++i) {
    seen[static_cast<std::size_t>(evolution.ranking[i])] = true;
    if (i > 0) {
      ASSERT_LE(evolution.errors[evolution.ranking[i - 1]], evolution.errors[evolution.ranking[i]]);
    }
  }
  for (const bool entry : seen) EXPECT_TRUE(entry);
}

TEST(Ranking, QuicksortSurvivesErrorsThatAreNoNumbers) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  CEvolution evolution = MakeRanked({kNaN, 3, kNaN, 1, kNaN, 2, kNaN});
  for (std::int32_t i = 0; i < 7; ++i) evolution.ranking.Append(i);
  evolution.SortRankingQuick();
  std::vector<bool> seen(7);
  for (const std::int32_t i : evolution.ranking) seen[static_cast<std::size_t>(i)] = true;
  for (const bool entry : seen) EXPECT_TRUE(entry);
}

}  // namespace
}  // namespace tolvik
