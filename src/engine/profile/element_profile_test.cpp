// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/profile/element_profile.tpp"

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>

#include "engine/number/cnumber.h"
#include "engine/number/complex.h"
#include "engine/profile/profile.tpp"

namespace tolvik::engine {
namespace {

struct Slice {
  double d, density, sigma;
};

CElementLayer Element(double f1, double f2, std::initializer_list<Slice> slices) {
  CElementLayer element;
  element.el_f1 = f1;
  element.el_f2 = f2;
  for (const Slice& slice : slices) {
    CElementSlice record;
    record.el_d = slice.d;
    record.el_density = slice.density;
    record.el_sigma = slice.sigma;
    element.slices.Append(record);
  }
  return element;
}

CState ElementState(std::initializer_list<CElementLayer> elements) {
  CState state;
  state.mode = Mode::kElement;
  state.lambda = 12398.326 / 700;
  for (const CElementLayer& element : elements) state.elementlayers.Append(element);
  return state;
}

template <class T = double>
Profile<T> Build(const CState& state) {
  Profile<T> profile;
  PrepareProfile<T>(state, profile);
  return profile;
}

TEST(ElementProfile, GridFollowsTheInnerSlicesOfTheFirstElement) {
  // 24 + 10.3 Å between substrate and ambient, whose own thicknesses are not used: (34.3 + 60) 2 = 188.6
  // entries.
  const auto profile = Build(ElementState({Element(10, 5, {{33, 1, 1}, {24, 2, 1}, {10.3, 1, 1}, {17, 0, 1}}),
                                           Element(1, 1, {{0, 1, 1}, {500, 1, 1}})}));
  ASSERT_EQ(profile.size, 188);
  for (std::int32_t i = 0; i < profile.size; ++i) {
    EXPECT_EQ(profile[i].layer_z, -30 + 0.5 * i);
    EXPECT_EQ(profile[i].layer_d, i == 0 ? 0.0 : 0.5);
    EXPECT_EQ(profile[i].layer_sigma, 0.0);
    EXPECT_EQ(profile[i].magnetic, 0);
  }
}

TEST(ElementProfile, FewerThanThreeSlicesHaveNoLength) {
  EXPECT_EQ(Build(ElementState({Element(10, 5, {{33, 1, 1}, {24, 2, 1}})})).size, 120);
  EXPECT_EQ(Build(ElementState({})).size, 120);
}

TEST(ElementProfile, DensityFollowsErrorFunctionsOfNeighbouringSlices) {
  const double sigma0 = 2, sigma1 = 3, d = 20;
  const auto profile = Build(ElementState({Element(10, 5, {{7, 1, sigma0}, {d, 3, sigma1}, {9, 0.5, 4}})}));
  const double scale = 415.1761541 / (700.0 * 700.0);
  for (const auto& entry : profile) {
    // The shares by the exact error function; the table is within 5e-7 of it.
    const double z = entry.layer_z;
    const double up0 = 0.5 * (1 + std::erf(z / sigma0 / std::sqrt(2))),
                 up1 = 0.5 * (1 + std::erf((z - d) / sigma1 / std::sqrt(2)));
    const double w0 = 1 - up0, w1 = up0 * (1 - up1), w2 = up1;
    const double density = (w0 + 3 * w1 + 0.5 * w2) / (w0 + w1 + w2);
    EXPECT_NEAR(entry.layer_delta, scale * density * 10, 1e-5 * scale * 10) << z;
    EXPECT_NEAR(entry.layer_beta, scale * density * 5, 1e-5 * scale * 5) << z;
  }
}

TEST(ElementProfile, PositionsStartAtThatOfTheLowestSlice) {
  CState state = ElementState({Element(10, 5, {{7, 1, 0}, {20, 3, 0}, {9, 0, 0}})});
  state.elementlayers[0].slices[0].z = 4.25;
  const auto profile = Build(state);
  const double scale = 4151.761541 / (700.0 * 700.0);
  EXPECT_NEAR(profile[68].layer_delta, scale, 1e-12);       // z = 4, below 4.25
  EXPECT_NEAR(profile[69].layer_delta, 3 * scale, 1e-12);   // z = 4.5
  EXPECT_NEAR(profile[108].layer_delta, 3 * scale, 1e-12);  // z = 24
  EXPECT_NEAR(profile[109].layer_delta, 0, 1e-12);          // z = 24.5
}

TEST(ElementProfile, ElementsAdd) {
  const auto a = Element(10, 5, {{7, 1, 1}, {20, 3, 1}, {9, 0, 0}}),
             b = Element(3, 8, {{7, 2, 2}, {12, 1, 1}, {9, 0, 0}});
  const auto both = Build(ElementState({a, b})), first = Build(ElementState({a})),
             second = Build(ElementState({b}));
  for (std::int32_t i = 0; i < second.size; ++i) {
    EXPECT_NEAR(both[i].layer_delta, first[i].layer_delta + second[i].layer_delta, 1e-15);
    EXPECT_NEAR(both[i].layer_beta, first[i].layer_beta + second[i].layer_beta, 1e-15);
  }
}

TEST(ElementProfile, OneSliceFillsAllHeights) {
  const auto profile = Build(ElementState({Element(10, 5, {{7, 2, 1}})}));
  for (const auto& entry : profile) EXPECT_NEAR(entry.layer_delta, 2 * 4151.761541 / 490000.0, 1e-15);
}

TEST(ElementProfile, ElementWithoutSlicesGivesNoNumber) {
  const auto profile = Build(ElementState({Element(10, 5, {{7, 2, 1}}), Element(10, 5, {})}));
  ASSERT_EQ(profile.size, 120);
  EXPECT_TRUE(std::isnan(profile[3].layer_delta));
  EXPECT_TRUE(std::isnan(profile[3].layer_beta));
}

TEST(ElementProfile, HostileLengths) {
  const auto with = [](double d) {
    return ElementState({Element(10, 5, {{7, 2, 1}, {d, 1, 1}, {1, 1, 1}})});
  };
  const double infinity = std::numeric_limits<double>::infinity();
  for (double d : {-60.0, -1e300, -infinity, std::numeric_limits<double>::quiet_NaN(), -59.6}) {
    EXPECT_EQ(Build(with(d)).size, 0) << d;
  }
  EXPECT_EQ(Build(with(-59.5)).size, 1);
  for (double d : {1e9, 1e18, 1e300, infinity}) {
    EXPECT_THROW(Build(with(d)), std::bad_alloc) << d;
    EXPECT_THROW(Build<float>(with(d)), std::bad_alloc) << d;
    EXPECT_THROW(Build<CNumber>(with(d)), std::bad_alloc) << d;
  }
}

TEST(ElementProfile, NumberTypesAgree) {
  const CState state = ElementState({Element(10, 5, {{7, 1, 2}, {20, 3, 1}, {9, 0, 0}})});
  const auto reference = Build(state);
  const auto check = [&]<class T>(T, double tolerance) {
    const auto profile = Build<T>(state);
    ASSERT_EQ(profile.size, reference.size);
    for (std::int32_t i = 0; i < profile.size; ++i) {
      EXPECT_NEAR(static_cast<double>(profile[i].layer_delta), reference[i].layer_delta, tolerance);
    }
  };
  check(0.0f, 2e-8);
  check(0.0L, 1e-16);
  check(CNumber(), 1e-16);
}

}  // namespace
}  // namespace tolvik::engine
