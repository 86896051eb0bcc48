// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/first_within.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace tolvik {
namespace {

const double kInf = std::numeric_limits<double>::infinity();

// The plain search.
std::int32_t PlainFind(const std::vector<double>& added, double value, double tolerance) {
  for (std::size_t i = 0; i < added.size(); ++i)
    if (std::abs(added[i] - value) <= tolerance) return static_cast<std::int32_t>(i);
  return -1;
}

TEST(FirstWithin, FindsWhatAPlainSearchFinds) {
  std::mt19937 random(20090101);
  for (const double spread : {0.02, 0.3, 1e12, 1e16, 1e300}) {
    std::uniform_real_distribution<double> any(700, 700 + spread);
    std::vector<double> keys;
    for (int i = 0; i < 400; ++i)
      keys.push_back(i % 7 == 3 ? keys[static_cast<std::size_t>(i / 2)] : any(random));
    keys[10] = std::nan("");
    keys[20] = kInf;
    keys[30] = -kInf;
    keys[40] = 1e17;
    FirstWithin index(keys, 0.01);
    std::vector<double> added;
    for (double key : keys) {
      EXPECT_EQ(index.Find(key), PlainFind(added, key, 0.01)) << key;
      const double value = any(random);
      EXPECT_EQ(index.Find(value), PlainFind(added, value, 0.01)) << value;
      index.Add(key, static_cast<std::int32_t>(added.size()));
      added.push_back(key);
    }
  }
}

TEST(FirstWithin, TakesNoKeysAndForeignKeys) {
  FirstWithin empty({}, 0.01);
  EXPECT_EQ(empty.Find(1), -1);
  empty.Add(1, 0);
  EXPECT_EQ(empty.Find(1), -1);
  FirstWithin one({5}, 0.01);
  one.Add(5.001, 0);
  one.Add(std::nan(""), 0);
  EXPECT_EQ(one.Find(5), -1);
  one.Add(5, 3);
  EXPECT_EQ(one.Find(5.005), 3);
  EXPECT_EQ(one.Find(std::nan("")), -1);
}

}  // namespace
}  // namespace tolvik
