// SPDX-License-Identifier: GPL-2.0-or-later
// Are our own product, exponential, sine and cosine of 200 bits worth their code? Their time compared with
// that of MPFR and of Arb (F. Johansson, IEEE Trans. Computers 66, 1281 (2017)), all rounded as MPFR rounds
// and compared bit by bit.
//
// Arb returns a ball. Where that does not decide the rounding to 200 bits, more bits are calculated (A. Ziv,
// ACM Trans. Math. Softw. 17, 410 (1991)). "bare" leaves out the rounding and the conversion from and to
// MPFR's numbers.
#include <arb.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <random>
#include <vector>

#include "engine/number/cnumber_functions.h"

namespace tolvik::bench {
namespace {

using engine::kFunctionBits;

constexpr int kCount = 512;
constexpr int kTurns = 30;
constexpr slong kGuardBits = 16;

struct Number {
  Number() { mpfr_init2(value, kFunctionBits); }
  ~Number() { mpfr_clear(value); }
  mpfr_t value;
};

struct Ball {
  Ball() { arb_init(value); }
  ~Ball() { arb_clear(value); }
  arb_t value;
};

struct Numbers {
  std::vector<Number> x{kCount}, y{kCount}, ours{2 * kCount}, other{2 * kCount};
  std::vector<Ball> balls{kCount}, partners{kCount};
};

void Fill(Numbers& numbers, int least_exponent, int largest_exponent) {
  std::mt19937 random(2017);
  gmp_randstate_t state;
  gmp_randinit_default(state);
  for (int i = 0; i < kCount; ++i) {
    for (mpfr_ptr to : {numbers.x[i].value, numbers.y[i].value}) {
      mpfr_urandomb(to, state);
      const int exponent = std::uniform_int_distribution<int>(least_exponent, largest_exponent)(random);
      mpfr_mul_2si(to, to, exponent, MPFR_RNDN);
    }
    arf_set_mpfr(arb_midref(numbers.balls[i].value), numbers.x[i].value);
    arf_set_mpfr(arb_midref(numbers.partners[i].value), numbers.y[i].value);
  }
  gmp_randclear(state);
}

bool Decided(const Ball& ball) {
  return arb_can_round_mpfr(ball.value, kFunctionBits, MPFR_RNDN) != 0;
}
void Round(mpfr_ptr result, const Ball& ball) {
  arf_get_mpfr(result, arb_midref(ball.value), MPFR_RNDN);
}

void ArbExp(mpfr_ptr result, mpfr_srcptr x, Ball& argument, Ball& value) {
  arf_set_mpfr(arb_midref(argument.value), x);
  slong bits = kFunctionBits + kGuardBits;
  do {
    arb_exp(value.value, argument.value, bits);
    bits *= 2;
  } while (!Decided(value));
  Round(result, value);
}

void ArbSinCos(mpfr_ptr sine, mpfr_ptr cosine, mpfr_srcptr x, Ball (&work)[3]) {
  arf_set_mpfr(arb_midref(work[0].value), x);
  slong bits = kFunctionBits + kGuardBits;
  do {
    arb_sin_cos(work[1].value, work[2].value, work[0].value, bits);
    bits *= 2;
  } while (!Decided(work[1]) || !Decided(work[2]));
  Round(sine, work[1]);
  Round(cosine, work[2]);
}

void ArbProduct(mpfr_ptr result, mpfr_srcptr a, mpfr_srcptr b, Ball (&work)[3]) {
  arf_set_mpfr(arb_midref(work[0].value), a);
  arf_set_mpfr(arb_midref(work[1].value), b);
  arf_mul(arb_midref(work[2].value), arb_midref(work[0].value), arb_midref(work[1].value), kFunctionBits,
          ARF_RND_NEAR);
  Round(result, work[2]);
}

// Nanoseconds of the processor for one number.
double TimeOf(const std::function<void(int)>& call) {
  std::timespec start, end;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &start);
  for (int i = 0; i < kCount; ++i) call(i);
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
  return (1e9 * static_cast<double>(end.tv_sec - start.tv_sec) +
          static_cast<double>(end.tv_nsec - start.tv_nsec)) /
         kCount;
}

// All take turns; the shortest time of each counts. The first two write `results` numbers each.
bool Report(const char* name, int results, Numbers& numbers, const std::function<void(int)> (&calls)[4]) {
  double least[4] = {1e30, 1e30, 1e30, 1e30};
  int different = 0;
  for (int turn = 0; turn < kTurns; ++turn) {
    for (int k = 0; k < 4; ++k) least[k] = std::min(least[k], TimeOf(calls[k]));
  }
  calls[0](0);
  for (int i = 0; i < kCount; ++i) calls[1](i);  // Arb, into other
  for (int i = 0; i < results * kCount; ++i) {
    different += mpfr_equal_p(numbers.ours[i].value, numbers.other[i].value) == 0;
  }
  std::printf("%-26s ours %6.0f ns   Arb %6.0f   Arb, bare %6.0f   MPFR %6.0f   different %d\n", name,
              least[0], least[1], least[2], least[3], different);
  return different == 0;
}

bool Functions(int least_exponent, int largest_exponent, const char* range) {
  Numbers n;
  Ball work[3];
  Fill(n, least_exponent, largest_exponent);
  char name[80];
  std::snprintf(name, sizeof name, "exp, %s", range);
  const slong bits = kFunctionBits + kGuardBits;
  bool same = Report(name, 1, n,
                     {[&](int i) { engine::ExpOf(n.ours[i].value, n.x[i].value); },
                      [&](int i) { ArbExp(n.other[i].value, n.x[i].value, work[0], work[1]); },
                      [&](int i) { arb_exp(work[1].value, n.balls[i].value, bits); },
                      [&](int i) { mpfr_exp(n.other[i].value, n.x[i].value, MPFR_RNDN); }});
  std::snprintf(name, sizeof name, "sin and cos, %s", range);
  same = Report(name, 2, n,
                {[&](int i) { engine::SinCosOf(n.ours[i].value, n.ours[i + kCount].value, n.x[i].value); },
                 [&](int i) { ArbSinCos(n.other[i].value, n.other[i + kCount].value, n.x[i].value, work); },
                 [&](int i) { arb_sin_cos(work[1].value, work[2].value, n.balls[i].value, bits); },
                 [&](int i) {
                   mpfr_sin_cos(n.other[i].value, n.other[i + kCount].value, n.x[i].value, MPFR_RNDN);
                 }}) &&
         same;
  return same;
}

bool Product() {
  Numbers n;
  Ball work[3];
  Fill(n, -12, 6);
  return Report("product", 1, n,
                {[&](int i) { engine::ProductOf(n.ours[i].value, n.x[i].value, n.y[i].value); },
                 [&](int i) { ArbProduct(n.other[i].value, n.x[i].value, n.y[i].value, work); },
                 [&](int i) {
                   arf_mul(arb_midref(work[2].value), arb_midref(n.balls[i].value),
                           arb_midref(n.partners[i].value), kFunctionBits, ARF_RND_NEAR);
                 },
                 [&](int i) { mpfr_mul(n.other[i].value, n.x[i].value, n.y[i].value, MPFR_RNDN); }});
}

}  // namespace
}  // namespace tolvik::bench

int main() {
  using namespace tolvik::bench;
  const bool small = Functions(-12, 0, "2^-13 .. 1");
  const bool large = Functions(0, 6, "0.5 .. 64");
  const bool product = Product();
  return small && large && product ? 0 : 1;
}
