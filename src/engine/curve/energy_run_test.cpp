// SPDX-License-Identifier: GPL-2.0-or-later
// Points that share an energy share tables, tensors and profile. Each must equal a scan of its own.
#include "engine/curve/energy_run.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

#include "engine/threads/processors.h"
#include "optics/energy.h"
#include "support/states.h"
#include "tolvik/tolvik.h"

namespace tolvik::engine {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// An energy that is exact after the conversion to the wavelength and back.
const double kRowEnergy = EnergyFromLambda(LambdaFromEnergy(620));

// Tables with a row at an energy of the map, of values at which the two ways to it round differently.
CState Sample() {
  CState state = testing::MakeState({{.sigma = 3}, {.thickness = 60, .sigma = 2}, {.thickness = 11}, {}});
  state.lambda = LambdaFromEnergy(650);
  state.layers[0].layer_db = state.layers[2].layer_db = "substrate";
  state.layers[1].layer_db = "film";
  testing::AddTable(state, "substrate", {{500, 1e-3, 1e-4}, {900, 3e-3, 5e-4}});
  testing::AddTable(state, "film", {{600, 7e-2, 3e-2}, {kRowEnergy, 1.1e-5, 5.3e-6}, {800, 2e-3, 3e-3}});
  testing::AddTable(state, "vacuum", {{0, 0, 0}, {30000, 0, 0}});
  return state;
}

// A map, energy running fastest, with points outside the tables (850 eV), out of reach of the wavelength (qz
// 0.9) and below the surface.
CSolution Map() {
  CSolution map;
  for (double qz : {0.02, -0.1, 0.05, 0.9, kInf, 0.1, kNan, 0.15, 0.2, 0.63, 0.0}) {
    for (double energy : {610.0, 615.0, kRowEnergy, 850.0, 630.0, 641.5}) {
      map.dataset_qz.Append(qz);
      map.dataset_eng.Append(energy);
      map.dataset_R0.Append(map.dataset_R0.IsEmpty() ? 0 : 1 + 0.1 * map.dataset_R0.size);
    }
  }
  return map;
}

CArray<double> OneByOne(const CState& sample, const CSolution& map) {
  CArray<double> curve;
  for (int i = 0; i < map.dataset_qz.size; ++i) {
    CSolution point = testing::MakeScan({map.dataset_qz[i]}, {map.dataset_eng[i]});
    point.dataset_R0.Append(map.dataset_R0[i]);
    CState state = sample;
    CalcEScanDLL(&point, &state);
    curve.Append(point.dataset_R0[0]);
  }
  return curve;
}

CArray<double> Parallel(const CState& sample, CSolution map, int threads) {
  ForceProcessorCount(threads);
  CState state = sample;
  EXPECT_EQ(CalcEScanParallelDLL(&map, &state), ReturnCode::kSuccess);
  ForceProcessorCount(0);
  return map.dataset_R0;
}

// Equal bits; NaN equals NaN.
void ExpectSame(const CArray<double>& result, const CArray<double>& expected, const std::string& what) {
  ASSERT_EQ(result.size, expected.size);
  for (int i = 0; i < result.size; ++i) {
    if (std::isnan(expected[i])) {
      EXPECT_TRUE(std::isnan(result[i])) << what << ", point " << i;
    } else {
      EXPECT_EQ(result[i], expected[i]) << what << ", point " << i;
    }
  }
}

void ExpectScansOfTheirOwn(const CState& state, const std::string& what) {
  const CArray<double> expected = OneByOne(state, Map());
  for (int threads : {1, 3}) ExpectSame(Parallel(state, Map(), threads), expected, what);
}

TEST(EnergyRun, EachPointIsAScanOfItsOwn) {
  ASSERT_TRUE(MayReorderPoints(Sample()));
  for (int precision = 0; precision < 4; ++precision) {
    for (int algorithm = 0; algorithm < 4; ++algorithm) {
      CState state = Sample();
      state.precision = precision;
      state.algorithm = algorithm;
      ExpectScansOfTheirOwn(
          state, "precision " + std::to_string(precision) + ", algorithm " + std::to_string(algorithm));
    }
  }
}

TEST(EnergyRun, ResolutionAndDisplayAreThoseOfEachPoint) {
  CState state = Sample();
  state.resolution = 0.03;
  state.mulqz4 = 1;
  state.polcorrection = 1;
  state.averaging = 2;
  ExpectScansOfTheirOwn(state, "resolution");
  state.resolution = -0.01;
  ExpectScansOfTheirOwn(state, "the single sample beside the point");
}

TEST(EnergyRun, ElementProfilesServeAllPointsOfTheirEnergy) {
  CState state = Sample();
  state.mode = Mode::kElement;
  CElementLayer iron;
  iron.element = "Fe";
  for (double d : {0.0, 40.0, 0.0}) {
    CElementSlice slice;
    slice.el_d = d;
    slice.el_sigma = 4;
    slice.el_density = 5;
    iron.slices.Append(slice);
  }
  state.elementlayers.Append(iron);
  testing::AddTable(state, "Fe", {});
  state.opticaltables.Last().kind = TableKind::kElement;
  for (double energy : {600.0, 620.0, 700.0}) {
    CColumnRow row;
    row.energy = energy;
    row.values.Append(energy / 30);
    row.values.Append(0.7);
    state.opticaltables.Last().ff.Append(row);
  }
  ExpectScansOfTheirOwn(state, "elements");
}

// The cursors that earlier points left have no effect on a run.
TEST(EnergyRun, ComesFromBelowToTheEnergyOfARow) {
  CSolution fresh = testing::MakeScan({0.1, 0.2}, {kRowEnergy, kRowEnergy}), used = fresh;
  fresh.dataset_R0 = used.dataset_R0 = fresh.dataset_qz;
  CState state = Sample(), later = Sample();
  for (COpticalTable& table : later.opticaltables) table.db.cursor = table.db.count - 1;
  CalcRunOfPoints(fresh, state);
  CalcRunOfPoints(used, later);
  EXPECT_EQ(fresh.dataset_R0, used.dataset_R0);
  EXPECT_EQ(state.lambda, later.lambda);
}

TEST(EnergyRun, PointsKeepTheirPlaceWhereTheOrderMatters) {
  CState state = Sample();
  state.scriptlines.Append("thickness[1] = 50");
  EXPECT_FALSE(MayReorderPoints(state)) << "a script may count";
  state.disablescript = 1;
  EXPECT_TRUE(MayReorderPoints(state));
  state.maprange.keeplambda = 1;
  EXPECT_FALSE(MayReorderPoints(state)) << "a point beyond its tables leaves its wavelength to the next";

  CState odd = Sample();
  odd.opticaltables[0].db.rows[1].energy = 500;
  EXPECT_FALSE(MayReorderPoints(odd)) << "two rows of one energy";
  odd = Sample();
  odd.averaging = -1;
  EXPECT_FALSE(MayReorderPoints(odd)) << "the mean of no point";
}

TEST(EnergyRun, OddTablesAndKeptWavelengthsAreCalculatedAllTheSame) {
  CState state = Sample();
  state.averaging = -1;
  ExpectScansOfTheirOwn(state, "the mean of no point");
  state = Sample();
  state.maprange.keeplambda = 1;
  CSolution map = Map();
  for (double& energy : map.dataset_eng)
    energy = std::min(energy + 1, 650.0);  // inside the tables, beside rows
  ExpectSame(Parallel(state, map, 2), OneByOne(state, map), "kept wavelength");
}

std::multiset<int> PointsOf(const EnergyRuns& runs) {
  std::multiset<int> all;
  for (const EnergyRun& run : runs.runs) {
    for (int i = run.begin; i < run.end; ++i) all.insert(runs.points[static_cast<std::size_t>(i)]);
  }
  return all;
}

TEST(EnergyRun, CollectsEachPointOnce) {
  const CSolution map = Map();
  for (int longest : {1, 3, 4, 100}) {
    EnergyRuns runs;
    ASSERT_TRUE(CollectEnergyRuns(map, longest, runs));
    const std::multiset<int> points = PointsOf(runs);
    EXPECT_EQ(static_cast<int>(points.size()), map.dataset_qz.size);
    EXPECT_EQ(std::set<int>(points.begin(), points.end()).size(), points.size());
    for (const EnergyRun& run : runs.runs) {
      EXPECT_GT(run.end, run.begin);
      EXPECT_LE(run.end - run.begin, longest);
      const double energy = map.dataset_eng[runs.points[static_cast<std::size_t>(run.begin)]];
      for (int i = run.begin + 1; i < run.end; ++i) {
        const int point = runs.points[static_cast<std::size_t>(i)];
        EXPECT_EQ(map.dataset_eng[point], energy);
        EXPECT_GT(point, runs.points[static_cast<std::size_t>(i) - 1]);
      }
    }
  }
}

TEST(EnergyRun, EnergiesAreToldApartByTheirBits) {
  const CSolution zeros = testing::MakeScan({1, 1, 1, 1, 1}, {0.0, -0.0, kNan, 0.0, kNan});
  CSolution scan = zeros;
  scan.dataset_R0 = scan.dataset_qz;
  EnergyRuns runs;
  EXPECT_FALSE(CollectEnergyRuns(scan, 10, runs)) << "three of five";
  scan.dataset_qz.Append(1);
  scan.dataset_eng.Append(-0.0);
  scan.dataset_R0.Append(1);
  ASSERT_TRUE(CollectEnergyRuns(scan, 10, runs));
  EXPECT_EQ(runs.points, (std::vector<std::int32_t>{0, 3, 1, 5, 2, 4}));
}

TEST(EnergyRun, ShortRecordsAreLeftToThePlainScan) {
  CSolution map = Map();
  EnergyRuns runs;
  map.dataset_R0.size -= 1;
  EXPECT_FALSE(CollectEnergyRuns(map, 10, runs));
  map = Map();
  map.dataset_eng.size -= 1;
  EXPECT_FALSE(CollectEnergyRuns(map, 10, runs));
  EXPECT_FALSE(CollectEnergyRuns(CSolution(), 10, runs));
}

}  // namespace
}  // namespace tolvik::engine
