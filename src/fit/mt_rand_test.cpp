// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/mt_rand.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <vector>

namespace tolvik {
namespace {

static_assert(sizeof(MTRand_int32) == sizeof(void*) && sizeof(MTRand) == sizeof(void*));

// The C++ standard, [rand.predef]: the 10000th value of a default-constructed mt19937 is 4123659995.
TEST(MTRand, TenThousandthValueOfSeed5489) {
  MTRand_int32 generator;
  generator.Seed(5489u);
  for (int i = 1; i < 10000; ++i) generator.Draw();
  EXPECT_EQ(generator.Draw(), 4123659995u);
}

TEST(MTRand, EqualsTheStandardLibraryForSingleSeeds) {
  for (const std::uint32_t seed : {0u, 1u, 5489u, 19650218u, 4294967295u}) {
    MTRand_int32 generator;
    generator.Seed(seed);
    std::mt19937 reference(seed);
    for (int i = 0; i < 2000; ++i) ASSERT_EQ(generator.Draw(), reference()) << seed << " at " << i;
  }
}

// First and last of the 1000 integers of mt19937ar.out by Matsumoto and Nishimura (2002), which starts from
// init_by_array({0x123, 0x234, 0x345, 0x456}).
TEST(MTRand, PublishedSequenceOfAKeyOfFour) {
  const std::uint32_t key[] = {0x123, 0x234, 0x345, 0x456};
  MTRand_int32 generator;
  generator.Seed(key, 4);
  for (const std::uint32_t expected : {1067595299u, 955945823u, 477289528u, 4107218783u, 4228976476u}) {
    EXPECT_EQ(generator.Draw(), expected);
  }
  for (int i = 5; i < 999; ++i) generator.Draw();
  EXPECT_EQ(generator.Draw(), 3460025646u);
}

// The array seeding written anew from the published pseudocode on 64-bit numbers, run by std::mt19937.
std::mt19937 ReferenceForKey(const std::vector<std::uint64_t>& key) {
  constexpr std::uint64_t kMask = 0xffffffffu;
  std::vector<std::uint64_t> mt(624);
  mt[0] = 19650218;
  for (std::uint64_t i = 1; i < 624; ++i) mt[i] = (1812433253 * (mt[i - 1] ^ (mt[i - 1] >> 30)) + i) & kMask;
  std::size_t i = 1;
  std::size_t j = 0;
  for (std::size_t k = std::max<std::size_t>(624, key.size()); k > 0; --k) {
    mt[i] = ((mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * 1664525)) + key[j] + j) & kMask;
    if (++i >= 624) {
      mt[0] = mt[623];
      i = 1;
    }
    if (++j >= key.size()) j = 0;
  }
  for (std::size_t k = 623; k > 0; --k) {
    mt[i] = ((mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * 1566083941)) - i) & kMask;
    if (++i >= 624) {
      mt[0] = mt[623];
      i = 1;
    }
  }
  mt[0] = 0x80000000u;
  std::stringstream text;
  for (const std::uint64_t word : mt) text << word << ' ';
  text << 624;
  std::mt19937 generator;
  text >> generator;
  return generator;
}

TEST(MTRand, KeysOfOneWordZeroIncluded) {
  for (const std::uint32_t seed : {0u, 1u, 12345u, 4294967295u}) {
    MTRand generator;
    generator.Seed(&seed, 1);
    std::mt19937 reference = ReferenceForKey({seed});
    for (int i = 0; i < 2000; ++i) ASSERT_EQ(generator.Draw(), reference()) << seed << " at " << i;
  }
}

TEST(MTRand, KeyLongerThanTheState) {
  std::vector<std::uint32_t> key(1000);
  for (std::uint32_t i = 0; i < 1000; ++i) key[i] = 2654435761u * i;
  MTRand generator;
  generator.Seed(key.data(), 1000);
  std::mt19937 reference = ReferenceForKey({key.begin(), key.end()});
  for (int i = 0; i < 1300; ++i) ASSERT_EQ(generator.Draw(), reference());
}

TEST(MTRand, AllObjectsShareOneStream) {
  MTRand_int32 first;
  MTRand second;
  first.Seed(7u);
  const std::uint32_t a = first.Draw();
  const std::uint32_t b = second.Draw();
  std::mt19937 reference(7u);
  EXPECT_EQ(a, reference());
  EXPECT_EQ(b, reference());
  MTRand_int32 third;  // another object does not move the stream
  EXPECT_EQ(third.Draw(), reference());
  second.Seed(7u);
  EXPECT_EQ(first.Draw(), a);
}

TEST(MTRand, RealsAreTheDrawsTimesTwoToMinus32) {
  MTRand generator;
  generator.Seed(42u);
  std::mt19937 reference(42u);
  for (int i = 0; i < 1000; ++i) {
    const double u = generator.DrawReal();
    ASSERT_EQ(u, static_cast<double>(reference()) / 4294967296.0);
    ASSERT_LT(u, 1.0);
  }
}

}  // namespace
}  // namespace tolvik
