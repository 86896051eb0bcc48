// SPDX-License-Identifier: GPL-2.0-or-later
// The recursion of Parratt by lanes, against the plain recursion of the same precision. Where the two differ
// the plain recursion of a wider type is the referee: the 200-bit one for some cases, the next wider built-in
// one, which is a hundred times faster, for the rest.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "precision/lanes_support.h"

namespace tolvik::test {
namespace {

using engine::CNumber;
using engine::lanes::LaneSet;

// With sanitizers the same checks on fewer cases.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kCases = 100;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(coverage_sanitizer)
constexpr int kCases = 100;
#else
constexpr int kCases = 2200;
#endif
#else
constexpr int kCases = 2200;
#endif
constexpr int kAngles = 24;  // 52800 stacks and angles for each set, precision and kind of stack

double Share(const RandomCase& test, int ray) {
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
  return 8.0 * epsilon * interfaces * (std::sqrt(std::abs(intensity) * share) + std::abs(intensity)) +
         smallest;
}

// All numbers representable in T, so that every precision calculates the same stack; 1 - delta too.
template <class T>
void RoundTo(RandomCase& test) {
  for (engine::CLayer<double>& layer : test.layers) {
    const auto round = [](double x) { return static_cast<double>(static_cast<T>(x)); };
    const T index = T(1.0) - static_cast<T>(layer.layer_delta);
    layer.layer_delta = std::isfinite(index) ? static_cast<double>(T(1.0) - index) : round(layer.layer_delta);
    layer.layer_beta = round(layer.layer_beta);
    layer.layer_d = round(layer.layer_d);
    layer.layer_sigma = round(layer.layer_sigma);
    layer.layer_ddelta = round(layer.layer_ddelta);
    layer.layer_dbeta = round(layer.layer_dbeta);
  }
  for (double& s : test.sines) s = static_cast<double>(static_cast<T>(s));
  test.k0 = static_cast<double>(static_cast<T>(test.k0));
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

template <class T>
class LanesParratt : public testing::Test {};
using LaneNumbers = testing::Types<float, double>;
TYPED_TEST_SUITE(LanesParratt, LaneNumbers);

TYPED_TEST(LanesParratt, OrdinaryStacksAreNeverWorseThanPlain) {
  for (const LaneSet set : LaneSetsHere()) {
    RandomCases random(1);
    for (int number = 0; number < kCases; ++number) {
      RandomCase test = random.Ordinary(kAngles);
      RoundTo<TypeParam>(test);
      Comparison<TypeParam>(test, set, number).Run();
      if (this->HasFailure()) return;
    }
  }
}

TYPED_TEST(LanesParratt, OddStacksGiveNumbersWherePlainDoes) {
  for (const LaneSet set : LaneSetsHere()) {
    RandomCases random(2);
    for (int number = 0; number < kCases; ++number) {
      RandomCase test = random.Odd(kAngles);
      RoundTo<TypeParam>(test);
      Comparison<TypeParam>(test, set, number).Run();
      if (this->HasFailure()) return;
    }
  }
}

// One angle alone, the same angle inside a long batch, and the batch turned about: the same bits.
TYPED_TEST(LanesParratt, ResultsDoNotDependOnTheBatch) {
  for (const LaneSet set : LaneSetsHere()) {
    RandomCases random(3);
    for (int number = 0; number < 200; ++number) {
      const RandomCase test = number % 2 == 0 ? random.Ordinary(150) : random.Odd(150);
      RandomCase turned = test;
      std::reverse(turned.sines.begin(), turned.sines.end());
      const Intensities<TypeParam> all = Calculate<TypeParam>(test, set);
      const Intensities<TypeParam> back = Calculate<TypeParam>(turned, set);
      for (std::size_t i = 0; i < test.sines.size(); ++i) {
        const auto same = [](TypeParam a, TypeParam b) { return a == b || (std::isnan(a) && std::isnan(b)); };
        const std::size_t other = test.sines.size() - 1 - i;
        EXPECT_TRUE(same(all.first[i], back.first[other]) && same(all.second[i], back.second[other]));
        if (i % 10 != 0) continue;
        RandomCase single = test;
        single.sines.assign(1, test.sines[i]);
        const Intensities<TypeParam> one = Calculate<TypeParam>(single, set);
        EXPECT_TRUE(same(all.first[i], one.first[0]) && same(all.second[i], one.second[0]))
            << NameOf(set) << " case " << number << " angle " << i;
      }
      if (this->HasFailure()) return;
    }
  }
}

// A contrast below the spacing of T at 1 is none: the interface vanishes, as in the plain form.
TYPED_TEST(LanesParratt, ContrastThatTheTypeCannotHoldVanishes) {
  RandomCase test;
  test.k0 = 4.0;
  test.layers.resize(3);
  test.layers[0].layer_delta = test.layers[1].layer_delta = std::numeric_limits<TypeParam>::epsilon() / 8;
  test.layers[1].layer_d = 50.0;
  test.sines = {0.01, 0.02, 0.05, 0.3};
  test.options.polarisation[0] = test.options.polarisation[6] = 1.0;
  for (const LaneSet set : LaneSetsHere()) {
    const Intensities<TypeParam> lane = Calculate<TypeParam>(test, set);
    for (const TypeParam intensity : lane.first) EXPECT_EQ(intensity, TypeParam(0));
    for (const TypeParam intensity : lane.second) EXPECT_EQ(intensity, TypeParam(0));
  }
}

// Against the closed form of one rough interface, so that not only agreement with the plain path counts:
// R = |(a - b) / (a + b) exp(-2 σ² a b)|² with real wavevectors (no absorption, above the critical angle).
TYPED_TEST(LanesParratt, OneInterfaceIsTheFresnelCoefficient) {
  RandomCase test;
  test.k0 = 4.0;
  test.layers.resize(2);
  test.layers[0].layer_delta = 0x1p-14;
  test.layers[0].layer_sigma = 2.0;
  test.sines = {0.0125, 0.03, 0.06, 0.1, 0.25};
  test.options.polarisation[0] = test.options.polarisation[6] = 1.0;
  const double n2 = (1 - 0x1p-14) * (1 - 0x1p-14);
  for (const LaneSet set : LaneSetsHere()) {
    const Intensities<TypeParam> lane = Calculate<TypeParam>(test, set);
    for (std::size_t i = 0; i < test.sines.size(); ++i) {
      const double s = test.sines[i];
      const double a = 4.0 * s, b = 4.0 * std::sqrt(s * s - 0x1p-13 + 0x1p-28);
      const double factor = std::exp(-8.0 * a * b);
      const double sigma = (a - b) / (a + b) * factor, pi = (n2 * a - b) / (n2 * a + b) * factor;
      const double bound = 1e5 * static_cast<double>(std::numeric_limits<TypeParam>::epsilon());
      EXPECT_NEAR(lane.first[i] / (sigma * sigma), 1.0, bound);
      EXPECT_NEAR(lane.second[i] / (pi * pi), 1.0, bound);
    }
  }
}

}  // namespace
}  // namespace tolvik::test
