// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve/escan_parallel.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <new>

#include "engine/threads/processors.h"
#include "optics/energy.h"
#include "support/states.h"
#include "tolvik/tolvik.h"

namespace tolvik::engine {
namespace {

using testing::MakeScan;

constexpr int kPoints = 60;

CState Sample() {
  CState state = testing::MakeState({{.sigma = 3}, {.thickness = 60, .sigma = 2}, {}});
  state.lambda = LambdaFromEnergy(650);
  state.layers[0].layer_db = "substrate";
  state.layers[1].layer_db = "film";
  testing::AddTable(state, "substrate", {{500, 1e-3, 1e-4}, {900, 3e-3, 5e-4}});
  testing::AddTable(state, "film", {{600, 4e-3, 1e-3}, {700, 7e-3, 5e-3}, {800, 2e-3, 3e-3}});
  testing::AddTable(state, "vacuum", {{0, 0, 0}, {30000, 0, 0}});
  return state;
}

/// Points of a map, some outside the tables (900 eV) or out of reach of their wavelength (qz 0.9).
CSolution Points() {
  CSolution scan;
  for (int i = 0; i < kPoints; ++i) {
    scan.dataset_qz.Append(i % 7 == 3 ? 0.9 : 0.02 + 0.005 * i);
    scan.dataset_eng.Append(i % 11 == 5 ? 900 : 610 + 3 * i);
    scan.dataset_R0.Append(i == 0 ? 0 : 1);
  }
  return scan;
}

class EScanParallel : public ::testing::Test {
 protected:
  ~EScanParallel() override { ForceProcessorCount(0); }
  static CArray<double> Scan(const CState& sample, CSolution scan, int threads) {
    ForceProcessorCount(threads);
    CState state = sample;
    EXPECT_EQ(CalcEScanParallelDLL(&scan, &state), ReturnCode::kSuccess);
    return scan.dataset_R0;
  }
};

TEST_F(EScanParallel, EachPointIsAScanOfItsOwn) {
  const CArray<double> parallel = Scan(Sample(), Points(), 3);
  for (int i = 0; i < kPoints; ++i) {
    const CSolution all = Points();
    CSolution point = MakeScan({all.dataset_qz[i]}, {all.dataset_eng[i]});
    point.dataset_R0.Append(all.dataset_R0[i]);
    CState state = Sample();
    CalcEScanDLL(&point, &state);
    EXPECT_EQ(parallel[i], point.dataset_R0[0]) << i;
  }
}

TEST_F(EScanParallel, OutputDoesNotDependOnTheNumberOfThreads) {
  for (int precision = 0; precision < 4; ++precision) {
    for (int algorithm = 0; algorithm < 3; ++algorithm) {
      CState state = Sample();
      state.precision = precision;
      state.algorithm = algorithm;
      state.scriptlines.Append("thickness[1] = 50 + energy / 100");  // of its point alone
      const CArray<double> one = Scan(state, Points(), 1);
      for (int threads : {2, 5}) EXPECT_EQ(Scan(state, Points(), threads), one) << precision << algorithm;
    }
  }
}

// A long scan distributes several points at a time, and fewer at the end.
TEST_F(EScanParallel, LongScansReachEveryPointOnce) {
  CSolution scan;
  for (int i = 0; i < 1501; ++i) {
    scan.dataset_qz.Append(0.01 + 0.0002 * i);
    scan.dataset_eng.Append(610 + 0.1 * i);
    scan.dataset_R0.Append(-1);
  }
  CSolution plain = scan;
  CState state = Sample();
  EXPECT_EQ(CalcEScanDLL(&plain, &state), ReturnCode::kSuccess);
  for (int threads : {1, 3}) EXPECT_EQ(Scan(Sample(), scan, threads), plain.dataset_R0) << threads;
}

// One sample and it is out of reach: the scan of that point ends with a sum of 0, which is written back. A
// point beyond its tables keeps the caller's value.
TEST_F(EScanParallel, WhatThePointThenHasIsWrittenBack) {
  CSolution scan = MakeScan({0.1, 0.9, 0.1, 0.1}, {650, 700, 900, 750});
  for (double value : {5.0, 6.0, 7.0, 8.0}) scan.dataset_R0.Append(value);
  const CArray<double> result = Scan(Sample(), scan, 2);
  EXPECT_EQ(result[1], 0.0);
  EXPECT_EQ(result[2], 7.0);
  EXPECT_NE(result[3], 8.0) << "a failure at one point leaves the others";
}

TEST_F(EScanParallel, TheCallersStateStaysAsItIs) {
  CState state = Sample();
  state.scriptlines.Append("thickness[1] = 80");
  CSolution scan = MakeScan({0.1, 0.2}, {650, 700});
  scan.dataset_R0 = scan.dataset_qz;
  ForceProcessorCount(2);
  EXPECT_EQ(CalcEScanParallelDLL(&scan, &state), ReturnCode::kSuccess);
  EXPECT_EQ(state.lambda, Sample().lambda);
  EXPECT_EQ(state.layers[1].layer_d, 60);
  EXPECT_EQ(state.layers[1].layer_delta, 0);
  EXPECT_EQ(state.opticaltables[1].db.cursor, 0u);
}

TEST_F(EScanParallel, AveragingHasNoEffectOnSinglePoints) {
  CState averaged = Sample();
  averaged.averaging = 3;
  EXPECT_EQ(Scan(averaged, Points(), 2), Scan(Sample(), Points(), 2));
  CState multiplied = Sample();
  multiplied.mulqz4 = 1;
  const CSolution scan = MakeScan({0.1}, {700});
  CSolution sized = scan;
  sized.dataset_R0.Append(1);
  EXPECT_DOUBLE_EQ(Scan(multiplied, sized, 2)[0], 1e-4 * Scan(Sample(), sized, 2)[0]);
}

TEST_F(EScanParallel, OnlyR0IsWrittenBack) {
  CSolution scan = MakeScan({0.1}, {700});
  for (auto* curve : {&scan.dataset_R0, &scan.dataset_Rp, &scan.dataset_Rm, &scan.dataset_A}) {
    curve->Append(3);
  }
  CState state = Sample();
  state.mulqz4 = 1;
  EXPECT_EQ(CalcEScanParallelDLL(&scan, &state), ReturnCode::kSuccess);
  EXPECT_NE(scan.dataset_R0[0], 3);
  EXPECT_EQ(scan.dataset_Rp[0], 3);
  EXPECT_EQ(scan.dataset_Rm[0], 3);
  EXPECT_EQ(scan.dataset_A[0], 3);
}

TEST_F(EScanParallel, AnEmptyScanReturnsAtOnce) {
  EXPECT_EQ(Scan(Sample(), CSolution(), 4).size, 0);
}

// More threads than points, and records that the caller did not size.
TEST_F(EScanParallel, ShortRecordsAreNotReadPastTheirEnds) {
  CSolution scan = MakeScan({0.1, 0.2, 0.3}, {700});
  scan.dataset_R0.Append(1);
  const CArray<double> result = Scan(Sample(), scan, 8);
  EXPECT_EQ(result.size, 1);
  EXPECT_NE(result[0], 1.0);
}

TEST_F(EScanParallel, ScansMayFollowEachOther) {
  const CArray<double> first = Scan(Sample(), Points(), 2);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(Scan(Sample(), Points(), 4), first);
}

TEST_F(EScanParallel, AThreadCountsUpToItsLastPoint) {
  CSolution scan = MakeScan({0.1, 0.2, 0.3}, {700, 700, 700});
  scan.dataset_R0 = scan.dataset_qz;
  std::int32_t next = 1;  // point 0 was taken by another thread
  CEScanContext context{3, &next, &scan, Sample()};
  EXPECT_EQ(EScanThread(&context), nullptr);
  EXPECT_EQ(next, 4);
  EXPECT_EQ(scan.dataset_R0[0], 0.1);
  EXPECT_NE(scan.dataset_R0[1], 0.2);
  EXPECT_NE(scan.dataset_R0[2], 0.3);
}

int threads_left = 0;

int StartSomeThreads(pthread_t* handle, const pthread_attr_t* attributes, void* (*body)(void*),
                     void* context) {
  return threads_left-- > 0 ? pthread_create(handle, attributes, body, context) : EAGAIN;
}

TEST_F(EScanParallel, FewerThreadsDoWhereMoreAreNotToBeHad) {
  const CArray<double> expected = Scan(Sample(), Points(), 1);
  ForceProcessorCount(4);
  for (int available : {0, 1, 2}) {
    threads_left = available;
    CSolution scan = Points();
    ScanInThreads(scan, Sample(), StartSomeThreads);
    EXPECT_EQ(scan.dataset_R0, expected) << available << " threads";
  }
}

// The profile of an element of 1e12 Å does not fit into memory; the exception stays inside its thread.
TEST_F(EScanParallel, AnExceptionInAThreadLeavesTheProcessAlive) {
  CState state = Sample();
  state.mode = Mode::kElement;
  CElementLayer iron;
  iron.element = "Fe";
  for (int i = 0; i < 3; ++i) iron.slices.Append(CElementSlice());
  iron.slices[1].el_d = 1e12;
  state.elementlayers.Append(iron);
  testing::AddTable(state, "Fe", {});
  state.opticaltables.Last().kind = TableKind::kElement;
  for (double energy : {100.0, 900.0}) {
    CColumnRow row;
    row.energy = energy;
    row.values.Assign(2, 1.0);
    state.opticaltables.Last().ff.Append(row);
  }
  CSolution scan = MakeScan({0.1, 0.2}, {650, 700});
  scan.dataset_R0 = scan.dataset_qz;
  EXPECT_EQ(Scan(state, scan, 2), scan.dataset_qz) << "the points keep their values";
  EXPECT_THROW(CalcEScanDLL(&scan, &state), std::bad_alloc) << "in the caller's thread it travels";
}

}  // namespace
}  // namespace tolvik::engine
