// SPDX-License-Identifier: GPL-2.0-or-later
// Lanes against the plain path on one case, with a wider type as the reference.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "precision/lanes_support.h"

namespace tolvik::testing {

using engine::CNumber;
using engine::lanes::LaneSet;

// With sanitizers the same checks on fewer cases.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr int kCases = 100;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(coverage_sanitizer)
inline constexpr int kCases = 100;
#else
inline constexpr int kCases = 2200;
#endif
#else
inline constexpr int kCases = 2200;
#endif
inline constexpr int kAngles = 24;  // 52800 stacks and angles for each set, precision and kind of stack

inline double Share(const RandomCase& test, int ray) {
  const double* part = test.options.polarisation + 4 * (ray - 1);
  return part[0] * part[0] + part[1] * part[1] + part[2] * part[2] + part[3] * part[3];
}

// The allowance for rounding: a few units for each coefficient (x - y) / (x + y), whose error is absolute and
// so weighs more the smaller the intensity is.
template <class T>
double RoundingOf(const RandomCase& test, double intensity, double share) {
  const double epsilon = static_cast<double>(std::numeric_limits<T>::epsilon());
  const double interfaces = static_cast<double>(test.layers.size());
  const double smallest = static_cast<double>(std::numeric_limits<T>::min());
  const double coefficients = 8.0 * epsilon * interfaces;
  return coefficients *
             (std::sqrt(std::abs(intensity) * share) + std::abs(intensity) + coefficients * share) +
         smallest;
}

// x rounded to T. Through memory: GCC 12 omits the last two conversions when it vectorises a loop of
// them.
template <class T>
double RoundThrough(double x) {
  const volatile T rounded = static_cast<T>(x);
  return static_cast<double>(rounded);
}

// All numbers representable in T, so that every precision calculates the same stack; 1 - delta too.
template <class T>
void RoundTo(RandomCase& test) {
  for (engine::CLayer<double>& layer : test.layers) {
    const auto round = [](double x) { return RoundThrough<T>(x); };
    const T index = T(1.0) - static_cast<T>(layer.layer_delta);
    layer.layer_delta = std::isfinite(index) ? static_cast<double>(T(1.0) - index) : round(layer.layer_delta);
    layer.layer_beta = round(layer.layer_beta);
    layer.layer_d = round(layer.layer_d);
    layer.layer_sigma = round(layer.layer_sigma);
    layer.layer_ddelta = round(layer.layer_ddelta);
    layer.layer_dbeta = round(layer.layer_dbeta);
    for (std::complex<double>& element : layer.epsilon)
      element = {round(element.real()), round(element.imag())};
  }
  for (double& s : test.sines) s = RoundThrough<T>(s);
  test.k0 = RoundThrough<T>(test.k0);
  test.options.tolerance = RoundThrough<T>(test.options.tolerance);
}

// The intensities in a wider type; their change when each number of the stack changes by the rounding of T:
// the conditioning; and the error of the plain path of T at these stacks next to this one: its noise.
class Reference {
 public:
  template <class T, class Exact>
  static Reference Of(const RandomCase& test, int moves) {
    using Wider = std::conditional_t<std::is_same_v<T, float>, double, long double>;
    Reference reference;
    reference.exact_ = Narrow(Calculate<Exact>(test, LaneSet::kPlain));
    RandomCases random(7);
    for (int turn = 0; turn < moves; ++turn) {
      RandomCase moved = test;
      MoveByRounding<T>(moved, random);
      RoundTo<T>(moved);
      reference.moved_.push_back(Narrow(Calculate<Wider>(moved, LaneSet::kPlain)));
      reference.plain_.push_back(Narrow(Calculate<T>(moved, LaneSet::kPlain)));
    }
    return reference;
  }

  double Exact(std::size_t i, int ray) const { return Value(exact_, i, ray); }
  // Twice the mean.
  double Conditioning(std::size_t i, int ray) const {
    double sum = 0;
    for (const Intensities<double>& moved : moved_) {
      const double off = std::abs(Value(moved, i, ray) - Exact(i, ray));
      if (std::isfinite(off)) sum += off;
    }
    return 2 * sum / static_cast<double>(moved_.size());
  }
  double Noise(std::size_t i, int ray) const {
    double largest = 0;
    for (std::size_t turn = 0; turn < moved_.size(); ++turn) {
      const double off = std::abs(Value(plain_[turn], i, ray) - Value(moved_[turn], i, ray));
      largest = std::max(largest, off);  // a NaN changes nothing
    }
    return largest;
  }

 private:
  template <class T>
  static void MoveByRounding(RandomCase& moved, RandomCases& random) {
    const double epsilon = static_cast<double>(std::numeric_limits<T>::epsilon());
    const auto step = [&] { return (random.OneIn(2) ? 1 : -1) * epsilon; };
    for (engine::CLayer<double>& layer : moved.layers) {
      layer.layer_delta += step();
      layer.layer_beta *= 1.0 + 2 * step();
      for (std::complex<double>& element : layer.epsilon) {
        element = {element.real() * (1.0 + 2 * step()), element.imag() * (1.0 + 2 * step())};
      }
    }
    for (double& s : moved.sines) s = std::min(1.0, s * (1.0 + 2 * epsilon));
  }

  template <class Wider>
  static Intensities<double> Narrow(const Intensities<Wider>& wide) {
    Intensities<double> result;
    for (const Wider& x : wide.first) result.first.push_back(static_cast<double>(x));
    for (const Wider& x : wide.second) result.second.push_back(static_cast<double>(x));
    return result;
  }
  static double Value(const Intensities<double>& all, std::size_t i, int ray) {
    return ray == 1 ? all.first[i] : all.second[i];
  }

  Intensities<double> exact_;
  std::vector<Intensities<double>> moved_, plain_;
};

template <class T>
Reference ReferenceOf(const RandomCase& test, bool strict, int moves) {
  return strict ? Reference::Of<T, CNumber>(test, moves) : Reference::Of<T, long double>(test, moves);
}

// A few neighbours give the conditioning of nearly all angles; where a lane seems wrong, many are used.
inline constexpr int kFewMoves = 4;
inline constexpr int kManyMoves = 40;

template <class T>
class Comparison {
 public:
  Comparison(const RandomCase& test, LaneSet set, int number)
      : test_(test),
        set_(set),
        number_(number),
        plain_(Calculate<T>(test, LaneSet::kPlain)),
        lane_(Calculate<T>(test, set)) {}

  void Run() {
    for (std::size_t i = 0; i < test_.sines.size(); ++i) {
      Check(i, 1, plain_.first[i], lane_.first[i]);
      Check(i, 2, plain_.second[i], lane_.second[i]);
    }
  }

 private:
  void Check(std::size_t i, int ray, double plain, double lane) {
    SCOPED_TRACE(::testing::Message() << NameOf(set_) << " case " << number_ << " angle " << i << " ray "
                                      << ray << " sine " << test_.sines[i]);
    if (!std::isfinite(plain)) {
      EXPECT_TRUE(std::isnan(plain) ? std::isnan(lane) : lane == plain) << plain << " " << lane;
      return;
    }
    ASSERT_TRUE(std::isfinite(lane)) << plain << " " << lane;
    if (lane == plain) return;
    const double rounding = RoundingOf<T>(test_, plain, Share(test_, ray));
    if (std::abs(lane - plain) <= rounding && number_ % 100 != 0) return;
    if (moves_ == 0) Judge(kFewMoves);
    const double exact = reference_.Exact(i, ray);
    ASSERT_TRUE(std::isfinite(exact)) << "plain " << plain << " lane " << lane;
    if (moves_ == kFewMoves && std::abs(lane - exact) > Allowed(i, ray, plain, rounding)) Judge(kManyMoves);
    EXPECT_LE(std::abs(lane - exact), Allowed(i, ray, plain, rounding))
        << "exact " << exact << " plain " << plain << " lane " << lane;
  }

  void Judge(int moves) {
    reference_ = ReferenceOf<T>(test_, number_ % 100 == 0, moves);
    moves_ = moves;
  }

  double Allowed(std::size_t i, int ray, double plain, double rounding) const {
    const double plain_off =
        std::max(std::abs(plain - reference_.Exact(i, ray)), 64 * reference_.Noise(i, ray));
    return plain_off + rounding + 32 * reference_.Conditioning(i, ray);
  }

  const RandomCase& test_;
  LaneSet set_;
  int number_;
  int moves_ = 0;
  Reference reference_;
  Intensities<T> plain_, lane_;
};

// One angle alone, the same angle inside a long batch, and the reversed batch: the same bits.
template <class T>
void ExpectSameInAnyBatch(const RandomCase& test, LaneSet set, int number) {
  const auto same = [](T a, T b) { return a == b || (std::isnan(a) && std::isnan(b)); };
  RandomCase turned = test;
  std::reverse(turned.sines.begin(), turned.sines.end());
  const Intensities<T> all = Calculate<T>(test, set);
  const Intensities<T> back = Calculate<T>(turned, set);
  for (std::size_t i = 0; i < test.sines.size(); ++i) {
    SCOPED_TRACE(::testing::Message() << NameOf(set) << " case " << number << " angle " << i);
    const std::size_t other = test.sines.size() - 1 - i;
    EXPECT_TRUE(same(all.first[i], back.first[other]) && same(all.second[i], back.second[other]));
    if (i % 10 != 0) continue;
    RandomCase single = test;
    single.sines.assign(1, test.sines[i]);
    const Intensities<T> one = Calculate<T>(single, set);
    EXPECT_TRUE(same(all.first[i], one.first[0]) && same(all.second[i], one.second[0]));
  }
}

}  // namespace tolvik::testing
