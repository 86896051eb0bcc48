// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/mt_rand.h"

#include <algorithm>

namespace tolvik {
namespace {

constexpr int kShift = 397;
constexpr std::uint32_t kMatrix = 0x9908b0dfu;
constexpr std::uint32_t kUpperBit = 0x80000000u;
constexpr std::uint32_t kLowerBits = 0x7fffffffu;

// The recurrence joins the upper bit of one word with the lower bits of the next.
std::uint32_t Twist(std::uint32_t upper, std::uint32_t lower) {
  const std::uint32_t joined = (upper & kUpperBit) | (lower & kLowerBits);
  return (joined >> 1) ^ ((lower & 1u) != 0 ? kMatrix : 0u);
}

}  // namespace

std::uint32_t MTRand_int32::words_[kWords];
std::int32_t MTRand_int32::position_ = kWords;
bool MTRand_int32::init_ = false;

MTRand_int32::MTRand_int32() {
  if (!init_) Seed(5489u);
  init_ = true;
}
MTRand_int32::~MTRand_int32() = default;
MTRand::~MTRand() = default;

void MTRand_int32::Seed(std::uint32_t value) {
  words_[0] = value;
  for (std::uint32_t i = 1; i < kWords; ++i) {
    words_[i] = 1812433253u * (words_[i - 1] ^ (words_[i - 1] >> 30)) + i;
  }
  position_ = kWords;
}

void MTRand_int32::Seed(const std::uint32_t* key, int length) {
  const std::uint32_t zero = 0;
  if (length < 1) {
    key = &zero;
    length = 1;
  }
  Seed(19650218u);
  int i = 1;
  const auto mixed = [&i](std::uint32_t multiplier) {
    const std::uint32_t before = words_[i - 1];
    return words_[i] ^ ((before ^ (before >> 30)) * multiplier);
  };
  const auto advance = [&i] {
    if (++i == kWords) {
      words_[0] = words_[kWords - 1];
      i = 1;
    }
  };
  for (int k = 0, j = 0; k < std::max(kWords, length); ++k, j = (j + 1) % length) {
    words_[i] = mixed(1664525u) + key[j] + static_cast<std::uint32_t>(j);
    advance();
  }
  for (int k = 1; k < kWords; ++k) {
    words_[i] = mixed(1566083941u) - static_cast<std::uint32_t>(i);
    advance();
  }
  words_[0] = kUpperBit;
}

void MTRand_int32::Regenerate() {
  for (int i = 0; i < kWords; ++i) {
    words_[i] = words_[(i + kShift) % kWords] ^ Twist(words_[i], words_[(i + 1) % kWords]);
  }
  position_ = 0;
}

std::uint32_t MTRand_int32::Draw() {
  if (position_ == kWords) Regenerate();
  std::uint32_t x = words_[position_++];
  x ^= x >> 11;
  x ^= (x << 7) & 0x9d2c5680u;
  x ^= (x << 15) & 0xefc60000u;
  return x ^ (x >> 18);
}

}  // namespace tolvik
