// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/chi_square_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <type_traits>

#include "support/toy_fit.h"

namespace tolvik {
namespace {

using testing::Point;
using testing::ToyFit;

// The members of the fit in order after one pointer to a virtual table, as a front end reads them.
struct ExpectedLayout {
  void* table;
  double fittemp, fitdtemp, lasterror;
  CArray<CFitVariable> fitvariables;
  CArray<double> parameters, residuals;
  bool restart;
  CArray<double>* vertices;
  CArray<double> bestparameters, vertexerrors, vertexsum;
  double besterror;
  CArray<CFitVariable> bestvariables;
  double restartbesterror;
  void *integergenerator, *realgenerator;
};

template <class T, class Member>
std::size_t OffsetOf(const T& object, const Member& member) {
  return static_cast<std::size_t>(reinterpret_cast<const char*>(&member) -
                                  reinterpret_cast<const char*>(&object));
}

ToyFit MakeFit() {
  return ToyFit([](const Point&) { return 0.0; });
}

TEST(ChiSquareFit, MembersStandWhereAFrontEndReadsThem) {
  static_assert(sizeof(CChiSquareFit) == sizeof(ExpectedLayout));
  static_assert(std::is_polymorphic_v<CChiSquareFit> && !std::has_virtual_destructor_v<CChiSquareFit>);
  const ToyFit fit = MakeFit();
  const CChiSquareFit& base = fit;
#define EXPECT_OFFSET(member) \
  EXPECT_EQ(OffsetOf(base, base.member), offsetof(ExpectedLayout, member)) << #member
  EXPECT_OFFSET(fittemp);
  EXPECT_OFFSET(fitdtemp);
  EXPECT_OFFSET(lasterror);
  EXPECT_OFFSET(fitvariables);
  EXPECT_OFFSET(parameters);
  EXPECT_OFFSET(residuals);
  EXPECT_OFFSET(restart);
  EXPECT_OFFSET(vertices);
  EXPECT_OFFSET(bestparameters);
  EXPECT_OFFSET(vertexerrors);
  EXPECT_OFFSET(vertexsum);
  EXPECT_OFFSET(besterror);
  EXPECT_OFFSET(bestvariables);
  EXPECT_OFFSET(restartbesterror);
  EXPECT_OFFSET(integergenerator);
  EXPECT_OFFSET(realgenerator);
#undef EXPECT_OFFSET
}

TEST(ChiSquareFit, StartsWithoutAResult) {
  const ToyFit fit = MakeFit();
  EXPECT_EQ(fit.lasterror, 0);
  EXPECT_EQ(fit.restartbesterror, 1e90);
  EXPECT_GE(fit.besterror, 1e90);
  EXPECT_TRUE(fit.fitvariables.IsEmpty());
  EXPECT_TRUE(fit.parameters.IsEmpty());
}

TEST(ChiSquareFit, SeedsWithAKeyOfOneWordAndDiscards2000) {
  const std::uint32_t key = 77;
  MTRand_int32 stream;
  stream.Seed(&key, 1);
  for (int i = 0; i < 2000; ++i) stream.Draw();
  const std::uint32_t expected = stream.Draw();
  const ToyFit fit([](const Point&) { return 0.0; }, 77);
  EXPECT_EQ(stream.Draw(), expected);
}

TEST(ChiSquareFit, SecondFitOfTheSameSeedResetsTheStreamOfTheFirst) {
  ToyFit first([](const Point&) { return 0.0; }, 5);
  const std::uint32_t a = first.integergenerator.Draw();
  const ToyFit second([](const Point&) { return 0.0; }, 5);
  EXPECT_EQ(first.realgenerator.Draw(), a);
}

TEST(ChiSquareFit, FourWordKeyTakesVariablesAndAsksForANewSimplex) {
  const std::uint32_t key[4] = {1, 2, 3, 4};
  CArray<CFitVariable> variables;
  variables.Assign(3, CFitVariable());
  MTRand_int32 stream;
  stream.Seed(key, 4);
  for (int i = 0; i < 2000; ++i) stream.Draw();
  const std::uint32_t expected = stream.Draw();
  const ToyFit fit(variables, key);
  EXPECT_EQ(stream.Draw(), expected);
  EXPECT_TRUE(fit.restart);
  EXPECT_EQ(fit.fitvariables.size, 3);
  EXPECT_EQ(fit.fittemp, 0);
  EXPECT_EQ(fit.fitdtemp, 0);
}

TEST(ChiSquareFit, RestartTakesTheValuesInOrder) {
  ToyFit fit = MakeFit();
  fit.Vary(3, 1).Vary(1, 1).Vary(2, 1).Start();
  EXPECT_TRUE(fit.restart);
  EXPECT_EQ(fit.Parameters(), (Point{3, 1, 2}));
  EXPECT_EQ(fit.parameters.capacity, 16);  // grown by appending
  fit.fitvariables[0].fit_value = 9;
  fit.Start();
  EXPECT_EQ(fit.Parameters(), (Point{9, 1, 2}));
}

TEST(ChiSquareFit, NoVariables) {
  ToyFit fit = MakeFit();
  fit.Start();
  EXPECT_TRUE(fit.parameters.IsEmpty());
  CArray<double> vector;
  vector.Append(5);
  fit.ClampParameters(vector);
  EXPECT_EQ(vector[0], 5);
}

double ClampOne(double value, double lower, double upper) {
  ToyFit fit = MakeFit();
  fit.Vary(0, 1, lower, upper);
  CArray<double> vector;
  vector.Append(value);
  fit.ClampParameters(vector);
  EXPECT_EQ(fit.fitvariables[0].fit_value, vector[0]);
  return vector[0];
}

TEST(ChiSquareFit, ClampMovesIntoTheBounds) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(ClampOne(0.5, 0, 1), 0.5);
  EXPECT_EQ(ClampOne(0, 0, 1), 0);
  EXPECT_EQ(ClampOne(1, 0, 1), 1);
  EXPECT_EQ(ClampOne(-3, 0, 1), 0);
  EXPECT_EQ(ClampOne(3, 0, 1), 1);
  EXPECT_EQ(ClampOne(kNaN, 0, 1), 0);
  EXPECT_EQ(ClampOne(kInfinity, 0, 1), 1);
  EXPECT_EQ(ClampOne(-kInfinity, 0, 1), 0);
  EXPECT_EQ(ClampOne(1.5, 2, 1), 1);  // crossed: the upper one wins from anywhere
  EXPECT_EQ(ClampOne(0, 2, 1), 1);
  EXPECT_EQ(ClampOne(3, 2, 1), 1);
  EXPECT_EQ(ClampOne(9e9, -1e10, 1e10), 9e9);
}

TEST(ChiSquareFit, ClampOfAShortVectorStaysInside) {
  ToyFit fit = MakeFit();
  fit.Vary(1, 1, 0, 1).Vary(2, 1, 0, 1);
  CArray<double> vector;
  vector.Append(5);
  fit.ClampParameters(vector);
  EXPECT_EQ(vector[0], 1);
  EXPECT_EQ(fit.fitvariables[1].fit_value, 2);
}

}  // namespace
}  // namespace tolvik
