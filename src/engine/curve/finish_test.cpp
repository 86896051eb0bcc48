// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve/finish.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/states.h"

namespace tolvik::engine {
namespace {

CArray<double> List(std::initializer_list<double> values) {
  CArray<double> list;
  for (double x : values) list.Append(x);
  return list;
}

CSolution ThreePoints() {
  CSolution solution = testing::MakeGrid({0.5, 1.0, 2.0});
  solution.dataset_R0 = List({1, 2, 4});
  solution.dataset_Rp = List({3, 5, 7});
  solution.dataset_Rm = List({1, 5, -7});
  solution.dataset_A = List({9, 9, 9});
  solution.datasetenergy = 8000;
  return solution;
}

// cos²(2θ) with sin θ = qz / (2 k) and k = 2π E / (12398.326 eV Å).
double PolarisationFactor(double qz, double energy) {
  const double theta = std::asin(qz / (2 * 2 * M_PI * energy / 12398.326));
  return std::pow(std::cos(2 * theta), 2);
}

void MakePi(CSolution& solution) {
  solution.datasetray1sigmare = 0;
  solution.datasetray1pire = 1;
}

TEST(FinishSolution, TakesTheAsymmetryOfPlusAndMinus) {
  CSolution solution = ThreePoints();
  FinishSolution(solution, 0, 0, 0);
  EXPECT_EQ(solution.dataset_A, List({0.5, 0, 0})) << "0 where the sum is exactly 0";
  EXPECT_EQ(solution.dataset_R0, List({1, 2, 4}));
}

TEST(FinishSolution, LeavesTheAsymmetryWithoutASecondCurve) {
  CSolution solution = ThreePoints();
  solution.dataset_Rm.Clear();
  FinishSolution(solution, 0, 0, 0);
  EXPECT_EQ(solution.dataset_A, List({9, 9, 9}));
}

TEST(FinishSolution, MultipliesByQz4UpToTheSizeOfEachCurve) {
  CSolution solution = ThreePoints();
  solution.dataset_Rm = List({16});
  solution.dataset_R0.Append(100);  // longer than the grid
  FinishSolution(solution, 1, 0, 0);
  EXPECT_EQ(solution.dataset_R0, List({1.0 / 16, 2, 64, 100}));
  EXPECT_EQ(solution.dataset_Rp, List({3.0 / 16, 5, 112}));
  EXPECT_EQ(solution.dataset_Rm, List({1}));
}

TEST(FinishSolution, DividesTheCurvesOfPurePiRays) {
  CSolution solution = ThreePoints();
  MakePi(solution);
  FinishSolution(solution, 0, 1, 0);  // a fresh record has ray two pi
  for (int i = 0; i < 3; ++i) {
    const CSolution bare = ThreePoints();
    const double factor = PolarisationFactor(bare.dataset_qz[i], 8000);
    EXPECT_NEAR(solution.dataset_R0[i], bare.dataset_R0[i] / factor, 1e-13);
    EXPECT_NEAR(solution.dataset_Rp[i], bare.dataset_Rp[i] / factor, 1e-13);
    EXPECT_NEAR(solution.dataset_Rm[i], bare.dataset_Rm[i] / factor, 1e-13);
  }
}

TEST(FinishSolution, LeavesTheCurvesOfOtherRays) {
  CSolution solution = ThreePoints();  // ray one sigma
  solution.datasetray2piim = 1e-300;   // not exactly pi any more
  FinishSolution(solution, 0, 1, 0);
  EXPECT_EQ(solution.dataset_R0, List({1, 2, 4}));
  EXPECT_EQ(solution.dataset_Rp, List({3, 5, 7}));
  EXPECT_EQ(solution.dataset_Rm, List({1, 5, -7}));
}

TEST(FinishSolution, TakesTheEnergyOfEachPointWhereThereIsOne) {
  CSolution solution = ThreePoints();
  MakePi(solution);
  solution.dataset_eng = List({8000, 4000, 9000});
  FinishSolution(solution, 0, 1, 0);
  EXPECT_NEAR(solution.dataset_R0[1], 2 / PolarisationFactor(1.0, 4000), 1e-13);
  EXPECT_NEAR(solution.dataset_R0[2], 4 / PolarisationFactor(2.0, 9000), 1e-13);
}

// A point out of reach has the angle -1.
TEST(FinishSolution, APointWithoutAngleIsCorrectedByMinusOne) {
  CSolution solution = ThreePoints();
  MakePi(solution);
  solution.dataset_qz[2] = 50;
  FinishSolution(solution, 0, 1, 0);
  EXPECT_NEAR(solution.dataset_R0[2], 4 / std::pow(std::cos(2.0), 2), 1e-13);
}

TEST(FinishSolution, AveragesOverTheNeighboursThatExist) {
  CSolution solution = ThreePoints();
  FinishSolution(solution, 0, 0, 1);
  EXPECT_EQ(solution.dataset_R0, List({1.5, 7.0 / 3, 3}));
  EXPECT_EQ(solution.dataset_Rp, List({4, 5, 6}));
  // Asymmetries 0.5, 0, 0, averaged themselves: not (Rp - Rm) / (Rp + Rm) of the averages.
  EXPECT_EQ(solution.dataset_A, List({0.25, 0.5 / 3, 0}));
  EXPECT_EQ(solution.dataset_qz, List({0.5, 1.0, 2.0}));
}

TEST(FinishSolution, AWideAverageIsTheMeanOfAll) {
  CSolution solution = ThreePoints();
  FinishSolution(solution, 0, 0, INT32_MAX);
  EXPECT_EQ(solution.dataset_R0, List({7.0 / 3, 7.0 / 3, 7.0 / 3}));
}

TEST(FinishSolution, OnePointKeepsItsValueUnderAnyAverage) {
  CSolution solution = testing::MakeGrid({0.3});
  solution.dataset_R0 = List({0.123});
  FinishSolution(solution, 0, 0, 5);
  EXPECT_EQ(solution.dataset_R0, List({0.123}));
}

TEST(FinishSolution, AMeanOverNothingIsNotANumber) {
  CSolution solution = ThreePoints();
  FinishSolution(solution, 0, 0, -1);
  for (double value : solution.dataset_R0) EXPECT_TRUE(std::isnan(value));
}

TEST(FinishSolution, AnEmptyRecordStaysEmpty) {
  CSolution solution;
  FinishSolution(solution, 1, 1, 3);
  EXPECT_EQ(solution.dataset_R0.size + solution.dataset_Rp.size + solution.dataset_A.size, 0);
}

// Arrays of unequal sizes must not be read past their ends.
TEST(FinishSolution, ShortArraysAreTreatedUpToTheirSize) {
  CSolution solution = ThreePoints();
  MakePi(solution);
  solution.dataset_Rm = List({1});
  solution.dataset_A = List({9, 9});
  solution.dataset_eng = List({8000});
  FinishSolution(solution, 1, 1, 2);
  EXPECT_EQ(solution.dataset_Rm.size, 1);
  EXPECT_EQ(solution.dataset_A.size, 2);
}

}  // namespace
}  // namespace tolvik::engine
