// SPDX-License-Identifier: GPL-2.0-or-later
#include <algorithm>
#include <array>
#include <vector>

#include "engine/curve/intensity.tpp"
#include "support/precisions.h"
#include "support/stacks.h"
#include "tolvik/state.h"

namespace tolvik::engine {
namespace {

template <class T>
class Intensity : public ::testing::Test {
 protected:
  static Profile<T> MagneticProfile() {
    return testing::MakeProfile<T>(
        {{.delta = 0.2, .beta = 0.05},
         {.thickness = 3, .delta = 0.1, .beta = 0.03, .sigma = 0.2, .ddelta = 0.02, .dbeta = 0.01},
         {}},
        {.gamma = 30, .phi = 60, .on = true});
  }
  /// Every option has a different value.
  static CState AllOptions() {
    CState state;
    state.scattering = Scattering::kTransmission;
    state.magnetizationmode = MagnetizationMode::kGaussFunctions;
    state.maggamma = 30;
    state.magphi = 60;
    state.epsilon = 1e-9;
    state.ray1sigmare = 0.1;
    state.ray1sigmaim = 0.2;
    state.ray1pire = 0.3;
    state.ray1piim = 0.4;
    state.ray2sigmare = 0.5;
    state.ray2sigmaim = 0.6;
    state.ray2pire = 0.7;
    state.ray2piim = 0.8;
    return state;
  }
  static constexpr double kK0 = 4.08;
};
TYPED_TEST_SUITE(Intensity, testing::Precisions, testing::PrecisionNames);

TYPED_TEST(Intensity, HandsTheOptionsOfTheStateToTheMatrixAlgorithms) {
  using T = TypeParam;
  const double rays[8] = {0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8};
  const T k0 = T(this->kK0), s = T(0.4);
  for (int algorithm : {Algorithm::kMatrixOne, Algorithm::kMatrixTwo}) {
    CState state = this->AllOptions();
    state.algorithm = algorithm;
    Profile<T> profile = this->MagneticProfile();
    IntensityWork<T> work;
    T first, second, direct1, direct2;
    const BatchOutcome outcome =
        CalcIntensities<T>({profile, k0, OptionsOfState<T>(state), {&s, 1}, &first, &second}, work);
    EXPECT_EQ(outcome.done, 1);
    EXPECT_EQ(outcome.error, nullptr);
    if (algorithm == 1) {
      CalcMatrixOne<T>({profile, true}, GrazingAngle(s), T(30.0), T(60.0), k0, true, direct2, direct1, rays,
                       T(1e-9));
    } else {
      CalcMatrixTwo<T>({profile, true}, GrazingAngle(s), T(30.0), T(60.0), k0, true, direct2, direct1, rays);
    }
    EXPECT_EQ(first, direct1);
    EXPECT_EQ(second, direct2);
    EXPECT_NE(first, second);
  }
}

// A sample of a long batch equals the sample alone, with or without the second ray.
TYPED_TEST(Intensity, ASampleDoesNotDependOnItsNeighbours) {
  using T = TypeParam;
  const T k0 = T(this->kK0);
  std::vector<T> s;
  for (int i = 0; i < 37; ++i) s.push_back(T(0.02 + 0.026 * i));
  for (int algorithm : {Algorithm::kParratt, Algorithm::kMatrixOne, Algorithm::kMatrixTwo}) {
    CState state = this->AllOptions();
    state.algorithm = algorithm;
    const IntensityOptions<T> options = OptionsOfState<T>(state);
    Profile<T> profile = this->MagneticProfile();
    IntensityWork<T> work;
    std::vector<T> first(s.size()), second(s.size());
    CalcIntensities<T>({profile, k0, options, s, first.data(), second.data()}, work);
    for (std::size_t i = s.size(); i-- > 0;) {
      T alone;
      CalcIntensities<T>({profile, k0, options, {&s[i], 1}, &alone}, work);
      EXPECT_EQ(alone, first[i]) << i;
    }
  }
}

// The second ray is the first one of the stack with reversed magnetisation, although both share the
// quantities that do not depend on the sense. The angles fill one block and a part of another; some rays lack
// a polarisation.
TYPED_TEST(Intensity, BothSensesAreStacksOfTheirOwn) {
  using T = TypeParam;
  const T k0 = T(this->kK0);
  std::vector<T> s;
  for (int i = 0; i < 131; ++i) s.push_back(T(0.01 + 0.007 * i));
  const std::array<double, 8> all_rays[] = {
      {0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8}, {1, 0, 0, 0, 0, 0, 1, 0}, {0, 0, 0, 1, 0, 1, 0, 0}};
  // Equal periods are calculated once; others, with one magnetic layer in three, have much to share.
  struct Stack {
    int periods;
    bool all_alike;
  };
  for (const Stack stack : {Stack{1, true}, Stack{8, true}, Stack{1, false}, Stack{12, false}}) {
    Profile<T> profile, turned;
    for (int i = 0; i < stack.periods; ++i) {
      for (const CLayer<T>& layer : this->MagneticProfile()) profile.Append(layer);
    }
    for (std::int32_t i = 0; i < profile.size; ++i) {
      profile[i].layer_d = profile[i].layer_d + T(stack.all_alike ? 1.0 : 1.0 + 0.25 * i);
      if (stack.all_alike) continue;
      profile[i].layer_sigma = T(0.3);
      if (i % 3 != 1) profile[i].layer_ddelta = profile[i].layer_dbeta = T(0.0);
    }
    turned = profile;
    for (CLayer<T>& layer : turned) {
      layer.layer_ddelta = -layer.layer_ddelta;
      layer.layer_dbeta = -layer.layer_dbeta;
    }
    for (const auto& rays : all_rays) {
      CState state = this->AllOptions();
      IntensityOptions<T> options = OptionsOfState<T>(state), swapped = options;
      std::copy(rays.begin(), rays.end(), options.polarisation);
      std::rotate_copy(rays.begin(), rays.begin() + 4, rays.end(), swapped.polarisation);
      IntensityWork<T> work;
      std::vector<T> first(s.size()), second(s.size()), alone(s.size());
      CalcIntensities<T>({profile, k0, options, s, first.data(), second.data()}, work);
      EXPECT_NE(first, second);
      CalcIntensities<T>({profile, k0, options, s, alone.data()}, work);
      EXPECT_EQ(first, alone);
      CalcIntensities<T>({turned, k0, swapped, s, alone.data()}, work);
      EXPECT_EQ(second, alone);
    }
  }
}

TYPED_TEST(Intensity, KnowsItsAlgorithms) {
  using T = TypeParam;
  for (int algorithm : {Algorithm::kParratt, Algorithm::kMatrixOne, Algorithm::kMatrixTwo})
    EXPECT_TRUE(IsAlgorithm(algorithm));
  for (int algorithm : {-1, 3, 1000}) EXPECT_FALSE(IsAlgorithm(algorithm));
  CState state = this->AllOptions();
  state.algorithm = 3;
  Profile<T> profile = this->MagneticProfile();
  IntensityWork<T> work;
  T first(5.0), second(5.0);
  const T s = T(0.4);
  CalcIntensities<T>({profile, T(this->kK0), OptionsOfState<T>(state), {&s, 1}, &first, &second}, work);
  EXPECT_EQ(first, T(0.0));
  EXPECT_EQ(second, T(0.0));
}

}  // namespace
}  // namespace tolvik::engine
