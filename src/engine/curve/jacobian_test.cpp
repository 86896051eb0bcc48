// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve/jacobian.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

namespace tolvik::engine {
namespace {

constexpr double kK0 = 4.0;

CLayer<double> Matter(double delta, double beta, double d, double sigma) {
  CLayer<double> layer;
  layer.layer_delta = delta;
  layer.layer_beta = beta;
  layer.layer_d = d;
  layer.layer_sigma = sigma;
  return layer;
}

class JacobianTest : public testing::Test {
 protected:
  JacobianTest() {
    options_.polarisation[0] = options_.polarisation[6] = 1;
    for (const CLayer<double>& layer :
         {Matter(1e-5, 1e-7, 0, 3), Matter(2e-5, 1e-6, 40, 2), CLayer<double>()}) {
      profile_.Append(layer);
    }
  }

  void Move(std::int32_t entry, ProfileField field, double factor = 1) {
    chain_.terms.push_back({chain_.parameters++, entry, field, factor});
  }
  // Each angle a point of its own.
  void SetAngles(const std::vector<double>& sines) {
    sine_ = sines;
    weight_.assign(sines.size(), 1.0);
    end_.clear();
    while (end_.size() < sines.size()) end_.push_back(static_cast<std::int32_t>(end_.size()) + 1);
  }

  GradientTask Task(Rays rays) {
    nodes_ = {sine_, weight_, end_, terms_};
    return {profile_, kK0, options_, nodes_, chain_, rays};
  }
  CurveJacobian Calculate(Rays rays = Rays::kFirst) {
    CurveJacobian result;
    CalcJacobian(Task(rays), result, work_);
    return result;
  }

  Profile<double> profile_;
  IntensityOptions<double> options_;
  ProfileChain chain_;
  std::vector<double> sine_, weight_;
  std::vector<std::int32_t> end_;
  std::vector<NodeTerm> terms_;
  CurveNodes nodes_;
  GradientWork work_;
};

// One interface above the critical edge: R = R(0) exp(-4 sigma² ka kb) with real wavevectors.
TEST_F(JacobianTest, SmoothInterfaceHasASlopeInSigmaSquared) {
  profile_.Clear();
  profile_.Append(Matter(0x1p-16, 0, 0, 0));
  profile_.Append(CLayer<double>());
  Move(0, ProfileField::kRoughness);
  Move(0, ProfileField::kRoughnessSquared);
  SetAngles({0.02, 0.1});
  const RayJacobian ray = Calculate().first;
  const double n2_less = -0x1p-15 + 0x1p-32;
  for (std::size_t i = 0; i < 2; ++i) {
    const double s = sine_[i], ka = kK0 * s, kb = kK0 * std::sqrt(s * s + n2_less);
    EXPECT_EQ(ray.jacobian[2 * i], 0);
    EXPECT_NEAR(ray.jacobian[2 * i + 1] / (-4 * ka * kb * ray.value[i]), 1, 1e-9);
  }
}

TEST_F(JacobianTest, SlopesInSigmaAndItsSquareFollowFromEachOther) {
  Move(1, ProfileField::kRoughness);
  Move(1, ProfileField::kRoughnessSquared);
  SetAngles({0.02});
  const RayJacobian ray = Calculate().first;
  EXPECT_NEAR(ray.jacobian[0] / (2 * profile_[1].layer_sigma * ray.jacobian[1]), 1, 1e-13);
}

TEST_F(JacobianTest, PointIsTheWeightedSumOfItsNodes) {
  Move(0, ProfileField::kBeta);
  Move(1, ProfileField::kThickness, 2.5);
  SetAngles({0.01, 0.02, 0.03, 0.04, 0.05, 0.06});
  const RayJacobian single = Calculate(Rays::kBoth).second;
  weight_ = {0.2, 0.3, 0.5, 1.0, 0.25, 0.75};
  end_ = {3, 3, 4, 6};  // unequal numbers, none at all in the second point
  const RayJacobian folded = Calculate(Rays::kSecond).second;
  const std::int32_t begin[] = {0, 3, 3, 4};
  ASSERT_EQ(folded.value.size(), 4u);
  for (std::size_t point = 0; point < 4; ++point) {
    double value = 0, slopes[2] = {};
    for (auto k = static_cast<std::size_t>(begin[point]); k < static_cast<std::size_t>(end_[point]); ++k) {
      value += weight_[k] * single.value[k];
      for (std::size_t p = 0; p < 2; ++p) slopes[p] += weight_[k] * single.jacobian[2 * k + p];
    }
    EXPECT_NEAR(folded.value[point], value, 1e-14 * std::abs(value));
    for (std::size_t p = 0; p < 2; ++p) {
      EXPECT_NEAR(folded.jacobian[2 * point + p], slopes[p], 1e-13 * std::abs(slopes[p]));
    }
  }
}

TEST_F(JacobianTest, TermsOfAParameterAddUp) {
  Move(0, ProfileField::kDelta);
  Move(1, ProfileField::kDelta);
  chain_.terms.push_back({2, 1, ProfileField::kDelta, 3.0});
  chain_.terms.push_back({2, 0, ProfileField::kDelta, -2.0});
  chain_.parameters = 4;
  SetAngles({0.015});
  const RayJacobian ray = Calculate().first;
  EXPECT_NEAR(ray.jacobian[2], 3 * ray.jacobian[1] - 2 * ray.jacobian[0], 1e-12 * std::abs(ray.jacobian[1]));
  EXPECT_EQ(ray.jacobian[3], 0) << "a parameter without effect";
}

TEST_F(JacobianTest, NodesWithoutAnAngleAddNothingAndOutOfReachIsNaN) {
  Move(0, ProfileField::kDelta);
  SetAngles({0.02, -0.01, std::nan(""), 1.0, 0.02});
  weight_.assign(5, 1.0);
  end_ = {3, 5};
  const RayJacobian ray = Calculate().first;
  SetAngles({0.02});
  const RayJacobian alone = Calculate().first;
  EXPECT_EQ(ray.value[0], alone.value[0]);
  EXPECT_EQ(ray.jacobian[0], alone.jacobian[0]);
  EXPECT_TRUE(std::isnan(ray.value[1]));
  EXPECT_TRUE(std::isnan(ray.jacobian[1]));
}

// A gap of vacuum at the angle 0: its wavevector vanishes.
TEST_F(JacobianTest, DivergingDerivativeIsNaNBesideAFiniteValue) {
  profile_[1] = Matter(0, 0, 40, 0);
  Move(1, ProfileField::kDelta);
  SetAngles({0.0, 0.01});
  const RayJacobian ray = Calculate().first;
  EXPECT_TRUE(std::isfinite(ray.value[0]));
  EXPECT_TRUE(std::isnan(ray.jacobian[0]));
  EXPECT_TRUE(std::isfinite(ray.jacobian[1]));
}

TEST_F(JacobianTest, SlabOfNoThicknessHasASlopeInIt) {
  profile_[0].layer_sigma = 0;
  profile_[1] = Matter(2e-5, 1e-6, 0, 0);
  Move(1, ProfileField::kThickness);
  Move(1, ProfileField::kDelta);
  Move(0, ProfileField::kDelta);
  SetAngles({0.02});
  const RayJacobian ray = Calculate().first;
  constexpr double kStep = 1e-5;
  profile_[1].layer_d = kStep;
  const RayJacobian moved = Calculate().first;
  EXPECT_NEAR((moved.value[0] - ray.value[0]) / kStep / ray.jacobian[0], 1, 1e-4);
  EXPECT_LT(std::abs(ray.jacobian[1]), 1e-9 * std::abs(ray.jacobian[2]));
}

TEST_F(JacobianTest, OffsetOfTheAngleMovesTheNodes) {
  chain_.parameters = 1;
  const double s = 0.02, step = 1e-7;
  const std::vector<double> cosine = {std::sqrt(1 - s * s)};
  terms_ = {{0, cosine.data(), nullptr}};
  SetAngles({s});
  const RayJacobian ray = Calculate().first;
  SetAngles({std::sin(std::asin(s) + step)});
  const double up = Calculate().first.value[0];
  SetAngles({std::sin(std::asin(s) - step)});
  const double down = Calculate().first.value[0];
  EXPECT_NEAR((up - down) / (2 * step) / ray.jacobian[0], 1, 1e-6);
}

TEST_F(JacobianTest, GradientIsTheSeededSumOfTheJacobian) {
  Move(0, ProfileField::kDelta);
  Move(1, ProfileField::kThickness);
  std::vector<double> sines;
  for (int i = 0; i < 700; ++i) sines.push_back(0.005 + 1e-4 * i);
  sines[300] = 1.5;  // out of reach; its seed stays 0
  SetAngles(sines);
  const CurveJacobian jacobian = Calculate(Rays::kBoth);
  CurveGradient gradient;
  std::int32_t next = 0;
  CalcGradient(
      Task(Rays::kBoth),
      [&](const SeedBlock& block) {
        EXPECT_EQ(block.begin, next);
        next += static_cast<std::int32_t>(block.first.size());
        for (std::size_t i = 0; i < block.first.size(); ++i) {
          if (std::isnan(block.first[i])) continue;
          block.first_seed[i] = 2 * block.first[i];
          block.second_seed[i] = -1;
        }
      },
      gradient, work_);
  EXPECT_EQ(next, 700);
  for (std::size_t p = 0; p < 2; ++p) {
    double sum = 0;
    for (std::size_t i = 0; i < 700; ++i) {
      if (i == 300) continue;
      sum += 2 * jacobian.first.value[i] * jacobian.first.jacobian[2 * i + p];
      sum -= jacobian.second.jacobian[2 * i + p];
    }
    EXPECT_NEAR(gradient.gradient[p], sum, 1e-11 * std::abs(sum));
  }
}

TEST_F(JacobianTest, RefusesWhatItCannotDo) {
  SetAngles({0.02});
  Move(3, ProfileField::kDelta);
  EXPECT_THROW(Calculate(), std::invalid_argument);
  chain_.terms[0] = {1, 0, ProfileField::kDelta, 1.0};
  EXPECT_THROW(Calculate(), std::invalid_argument);
  chain_.terms.clear();
  EXPECT_NO_THROW(Calculate());
  options_.algorithm = kMatrixOne;
  EXPECT_FALSE(HasGradient(options_));
  EXPECT_THROW(Calculate(), std::invalid_argument);
}

}  // namespace
}  // namespace tolvik::engine
