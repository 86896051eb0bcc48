// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/profile/segmented_values.tpp"

#include <gtest/gtest.h>

#include <limits>

#include "engine/number/cnumber.h"
#include "engine/number/complex.h"
#include "support/stacks.h"

namespace tolvik::engine {
namespace {

using testing::MakeProfile;
using testing::Slab;

const Slab kVacuum;

// The formulas written out for one field, with the error function of the table.
double Step(double x) {
  return TableErf(x * 0.7071067811865475);
}
double Side(const Profile<double>& p, std::int32_t j, double z) {
  const double sigma = p[j].layer_sigma;
  return Step((z - p[j].layer_z) / (sigma == 0 ? 1e-10 : sigma));
}
double PlainWeight(const Profile<double>& p, std::int32_t i, double z) {
  const double bottom = i == 0 ? 1 : Side(p, i - 1, z);
  const double top = i == p.size - 1 ? -1 : Side(p, i, z);
  return 0.25 * (1 + bottom) * (1 - top);
}
double PlainProduct(const Profile<double>& p, std::int32_t i, double z) {
  double weight = 1;
  for (std::int32_t j = 0; j + 1 < p.size; ++j) {
    weight *= 0.5 * (p[i].layer_z > p[j].layer_z ? 1 + Side(p, j, z) : 1 - Side(p, j, z));
  }
  return weight;
}
double PlainDelta(const Profile<double>& p, std::int32_t model, double z) {
  double sum = 0, total = 0;
  for (std::int32_t i = 0; i < p.size; ++i) {
    const double weight = model == 0 ? PlainProduct(p, i, z) : PlainWeight(p, i, z);
    sum += weight * p[i].layer_delta;
    total += weight;
  }
  if (model <= 1) return sum / total;
  double delta = p[p.size - 1].layer_delta;
  for (std::int32_t j = 0; j + 1 < p.size; ++j) {
    delta += 0.5 * (p[j].layer_delta - p[j + 1].layer_delta) * (1 - Side(p, j, z));
  }
  return delta;
}

Profile<double> RoughStack() {
  return MakeProfile<double>({{0, 0.02, 0.01, 4},
                              {20, 0.05, 0.02, 3, 0.004, 0.002},
                              {9, 0.01, 0.03, 0, 0.001, 0.003},
                              {0, 0.04, 0.01, 2},
                              {15, 0.03, 0.005, 12},
                              kVacuum},
                             {40, 70, true});
}

TEST(SegmentedValues, EachModelFollowsItsFormula) {
  const auto stack = RoughStack();
  for (std::int32_t model : {0, 1, 2, 5, -3}) {
    ProfileSampler<double> sampler(stack, model);
    for (double z = -60; z < 120; z += 0.37) {
      CLayer<double> entry;
      sampler.Fill(z, entry);
      // e is odd except for the grid of its table, 3e-7 at most.
      EXPECT_NEAR(entry.layer_delta, PlainDelta(stack, model < 0 ? 2 : model, z), model <= 1 ? 1e-15 : 5e-8)
          << model << " at " << z;
      EXPECT_EQ(entry.layer_z, z);
      EXPECT_EQ(entry.layer_sigma, 0.0);
    }
  }
}

TEST(SegmentedValues, SumOfStepsUsesTheErrorFunctionOfTheMirroredArgument) {
  const auto stack = MakeProfile<double>({{0, 0.02, 0.01, 4}, kVacuum});
  CLayer<double> entry;
  CalcSegmentedValues(stack, 2, 1.7, entry);
  EXPECT_EQ(entry.layer_delta, 0.5 * 0.02 * (1 + Step((0 - 1.7) / 4.0)));
}

TEST(SegmentedValues, AllFieldsAndTheTensorFollowTheSameWeights) {
  const auto stack = RoughStack();
  for (std::int32_t model : {0, 1, 2}) {
    CLayer<double> entry;
    CalcSegmentedValues(stack, model, 24.0, entry);
    // Solve the weights of a field that is delta in all entries but scaled: beta and tensor by linearity.
    auto other = stack;
    for (auto& layer : other) {
      layer.layer_beta = 2 * layer.layer_delta;
      layer.layer_ddelta = 3 * layer.layer_delta;
      layer.layer_dbeta = -layer.layer_delta;
      for (int k = 0; k < 9; ++k)
        layer.epsilon[k] = std::complex<double>(k * layer.layer_delta, -layer.layer_delta);
    }
    CLayer<double> scaled;
    CalcSegmentedValues(other, model, 24.0, scaled);
    EXPECT_NEAR(scaled.layer_beta, 2 * entry.layer_delta, 1e-16);
    EXPECT_NEAR(scaled.layer_ddelta, 3 * entry.layer_delta, 1e-16);
    EXPECT_NEAR(scaled.layer_dbeta, -entry.layer_delta, 1e-16);
    for (int k = 0; k < 9; ++k) {
      EXPECT_NEAR(scaled.epsilon[k].real(), k * entry.layer_delta, 1e-15) << k;
      EXPECT_NEAR(scaled.epsilon[k].imag(), -entry.layer_delta, 1e-16) << k;
    }
  }
}

TEST(SegmentedValues, TwoEqualLayersAreConstantInTheSumOfSteps) {
  const auto stack = MakeProfile<double>({{0, 0.02, 0.01, 4}, {0, 0.02, 0.01, 1}});
  for (double z : {-50.0, -3.0, 0.0, 0.1, 7.0, 80.0}) {
    CLayer<double> entry;
    CalcSegmentedValues(stack, 2, z, entry);
    EXPECT_EQ(entry.layer_delta, 0.02);
    EXPECT_EQ(entry.layer_beta, 0.01);
  }
}

TEST(SegmentedValues, VanishingWeightsGiveZeros) {
  // An ambient that was not moved away, here below all interfaces, has no share above them; nor has any other
  // entry.
  auto stack = MakeProfile<double>({{0, 0.02, 0.01, 1}, {10, 0.05, 0.02, 1}, {0, 0.03, 0.01, 0}});
  stack[2].layer_z = -1000;
  CLayer<double> entry;
  entry.layer_delta = 7;
  CalcSegmentedValues(stack, 0, 100.0, entry);
  EXPECT_EQ(entry.layer_delta, 0.0);
  EXPECT_EQ(entry.epsilon[0], 0.0);
}

TEST(SegmentedValues, ValuesThatAreNotNumbersAreSeenAtAllHeights) {
  auto stack = RoughStack();
  stack[1].layer_delta = std::numeric_limits<double>::quiet_NaN();
  for (std::int32_t model : {0, 1, 2}) {
    CLayer<double> entry;
    CalcSegmentedValues(stack, model, 1000.0, entry);
    EXPECT_TRUE(std::isnan(entry.layer_delta)) << model;
    EXPECT_FALSE(std::isnan(entry.layer_beta)) << model;
  }
}

TEST(SegmentedValues, LayerWeightsOfOuterAndInnerEntries) {
  const auto stack = RoughStack();
  for (std::int32_t i = 0; i < stack.size; ++i) {
    for (double z : {-40.0, -1.0, 12.0, 20.5, 60.0}) {
      EXPECT_NEAR(LayerWeight(stack, i, z), PlainWeight(stack, i, z), 1e-16) << i << " at " << z;
    }
  }
  EXPECT_EQ(LayerWeight(stack, 0, -2e10), 0.0);
  EXPECT_EQ(LayerWeight(stack, stack.size - 1, 2e10), 0.0);
}

TEST(SegmentedValues, NumberTypesAgree) {
  const auto check = []<class T>(T, double tolerance) {
    const auto stack = MakeProfile<T>({{0, 0.02, 0.01, 4}, {20, 0.05, 0.02, 3}, kVacuum});
    const auto reference = MakeProfile<double>({{0, 0.02, 0.01, 4}, {20, 0.05, 0.02, 3}, kVacuum});
    for (std::int32_t model : {0, 1, 2}) {
      CLayer<T> entry;
      CLayer<double> expected;
      CalcSegmentedValues(stack, model, T(17.25), entry);
      CalcSegmentedValues(reference, model, 17.25, expected);
      EXPECT_NEAR(static_cast<double>(entry.layer_delta), expected.layer_delta, tolerance);
    }
  };
  check(0.0f, 1e-8);
  check(0.0L, 1e-15);
  check(CNumber(), 1e-15);
}

}  // namespace
}  // namespace tolvik::engine
