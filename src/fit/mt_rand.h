// SPDX-License-Identifier: GPL-2.0-or-later
// The random stream of all searches: MT19937, the 32-bit Mersenne twister of M. Matsumoto and T. Nishimura,
// ACM Trans. Model. Comput. Simul. 8, 3 (1998), with the array seeding of their revision of 2002.
//
// All objects of both classes draw from one stream of the process, and seeding any of them seeds that stream:
// a fit that starts from a seed repeats itself, independent of earlier fits. There is no lock; only one
// thread may draw at a time.
#pragma once

#include <cstdint>

namespace tolvik {

/// A handle on the process-wide stream. It has no data of its own besides its virtual table.
class MTRand_int32 {
 public:
  MTRand_int32() = default;
  MTRand_int32(const MTRand_int32&) = default;
  MTRand_int32& operator=(const MTRand_int32&) = default;
  virtual ~MTRand_int32();

  /// Seeds the stream with one value. An unseeded stream starts from 5489.
  void Seed(std::uint32_t value);
  /// Seeds the stream with a key of length words; a length below 1 counts as a key of one 0.
  void Seed(const std::uint32_t* key, int length);

  /// The next number, uniform over all 32-bit values.
  std::uint32_t Draw();
};

/// The handle for real numbers: 0 <= u < 1 on the grid of 2^-32.
class MTRand : public MTRand_int32 {
 public:
  ~MTRand() override;
  /// The next number of the stream times 2^-32.
  double DrawReal() { return static_cast<double>(Draw()) * 0x1p-32; }
};

}  // namespace tolvik
