// SPDX-License-Identifier: GPL-2.0-or-later
// Lanes against the plain path on one case, with a wider type as the referee.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "precision/lanes_support.h"

namespace tolvik::test {

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

// What rounding must be granted: a few units for each coefficient (x - y) / (x + y), whose error is absolute
// and so weighs more the smaller the intensity is.
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

// x rounded to T. Through memory: GCC 12 leaves the last two conversions out when it vectorises a loop of
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

// The intensities in a wider type, and how far they move when each index and the angle move by the rounding
// of T: the conditioning.
class Referee {
 public:
  template <class T, class Wider>
  static Referee Of(const RandomCase& test) {
    const double epsilon = static_cast<double>(std::numeric_limits<T>::epsilon());
    Referee referee;
    referee.exact_ = Narrow(Calculate<Wider>(test, LaneSet::kPlain));
    for (int turn = 0; turn < 2; ++turn) {
      RandomCase moved = test;
      int sign = 1;
      for (engine::CLayer<double>& layer : moved.layers) {
        layer.layer_delta += sign * epsilon;
        layer.layer_beta *= 1.0 + 2 * sign * epsilon;
        for (std::complex<double>& element : layer.epsilon) element *= 1.0 + 2 * sign * epsilon;
        sign = turn == 0 ? -sign : sign;
      }
      for (double& s : moved.sines) s = std::min(1.0, s * (1.0 + 2 * epsilon));
      referee.moved_[turn] = Narrow(Calculate<Wider>(moved, LaneSet::kPlain));
    }
    return referee;
  }

  double Exact(std::size_t i, int ray) const { return Value(exact_, i, ray); }
  double Conditioning(std::size_t i, int ray) const {
    return std::abs(Value(moved_[0], i, ray) - Exact(i, ray)) +
           std::abs(Value(moved_[1], i, ray) - Exact(i, ray));
  }

 private:
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

  Intensities<double> exact_, moved_[2];
};

template <class T>
Referee JudgeOf(const RandomCase& test, bool strict) {
  using Wider = std::conditional_t<std::is_same_v<T, float>, double, long double>;
  return strict ? Referee::Of<T, CNumber>(test) : Referee::Of<T, Wider>(test);
}

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
    SCOPED_TRACE(testing::Message() << NameOf(set_) << " case " << number_ << " angle " << i << " ray " << ray
                                    << " sine " << test_.sines[i]);
    if (!std::isfinite(plain)) {
      EXPECT_TRUE(std::isnan(plain) ? std::isnan(lane) : lane == plain) << plain << " " << lane;
      return;
    }
    ASSERT_TRUE(std::isfinite(lane)) << plain << " " << lane;
    if (lane == plain) return;
    const double rounding = RoundingOf<T>(test_, plain, Share(test_, ray));
    if (std::abs(lane - plain) <= rounding && number_ % 100 != 0) return;
    if (!judged_) referee_ = JudgeOf<T>(test_, number_ % 100 == 0);
    judged_ = true;
    const double exact = referee_.Exact(i, ray);
    ASSERT_TRUE(std::isfinite(exact)) << "plain " << plain << " lane " << lane;
    EXPECT_LE(std::abs(lane - exact), std::abs(plain - exact) + rounding + 32 * referee_.Conditioning(i, ray))
        << "exact " << exact << " plain " << plain << " lane " << lane;
  }

  const RandomCase& test_;
  LaneSet set_;
  int number_;
  bool judged_ = false;
  Referee referee_;
  Intensities<T> plain_, lane_;
};

}  // namespace tolvik::test
