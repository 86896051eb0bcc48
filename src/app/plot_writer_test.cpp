// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/plot_writer.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "optics/rays.h"
#include "support/child.h"
#include "support/scratch.h"

namespace tolvik {
namespace {

using testing::Child;
using testing::ScratchFolder;

CDataset Curve(double energy, char letter, double first, int points) {
  CDataset curve;
  curve.datasetenergy = energy;
  SetRayFromLetter(FirstRay(curve), letter);
  for (int i = 0; i < points; ++i) {
    curve.dataset_qz.Append(0.1 + 0.05 * i);
    curve.dataset_R0.Append(first / (i + 1));
  }
  return curve;
}

int Write(const ScratchFolder& folder, const CMapFile& map) {
  return Child(folder.Path("."), [&] { WriteSummaryPlot(map); }).Wait();
}

TEST(WriteSummaryPlot, DrawsThePolarisationsOfEachEnergy) {
  const ScratchFolder folder;
  std::filesystem::create_directory(folder.Path("summary"));
  CState state;
  CMapFile map(state);
  map.constenergy.Append(Curve(700, 's', 1e-3, 2));
  map.constenergy.Append(Curve(720, 's', 2e-3, 1));
  map.constenergy.Append(Curve(710, 's', 2e-3, 0));  // no points to draw
  map.constenergy.Append(Curve(700, 'l', 4e-3, 1));
  map.constenergy[3].datasetmultiplicator = 2;
  map.constenergy[3].datasettranslator = 1e-3;
  EXPECT_EQ(Write(folder, map), 0);
  EXPECT_EQ(folder.Read("summary/plot.gp"),
            "set term png\nset logscale y\nset xlabel \"qz\"\nset ylabel \"R\"\n"
            "energies=\"700.000000 720.000000 \"\n"
            "set output \"pic0000.png\" \n"
            "plot [0.05:0.4] [0.0000001:0.01] sqrt(-1) title\"\""
            ", \"refl.txt\" every :::0::0 w lp title \"700.000000eV p=sigma\""
            ", \"refl.txt\" every :::2::2 w lp title \"700.000000eV p=left circular\"\n"
            "set output \"pic0001.png\" \n"
            "plot [0.05:0.4] [0.0000001:0.01] sqrt(-1) title\"\""
            ", \"refl.txt\" every :::1::1 w lp title \"720.000000eV p=sigma\"\n");
  EXPECT_EQ(folder.Read("summary/refl.txt"),
            "0.100000 1.000000e-03\n0.150000 5.000000e-04\n\n"
            "0.100000 2.000000e-03\n\n"
            "0.100000 1.000000e-02\n\n");
}

TEST(WriteSummaryPlot, TakesAnEmptyMap) {
  const ScratchFolder folder;
  std::filesystem::create_directory(folder.Path("summary"));
  CState state;
  EXPECT_EQ(Write(folder, CMapFile(state)), 0);
  EXPECT_EQ(folder.Read("summary/refl.txt"), "");
  EXPECT_TRUE(folder.Read("summary/plot.gp").ends_with("energies=\"\"\n"));
}

TEST(WriteSummaryPlot, EndsTheProcessWithoutTheFolder) {
  const ScratchFolder folder;
  CState state;
  const CMapFile map(state);
  Child child(folder.Path("."), [&] { WriteSummaryPlot(map); });
  EXPECT_EQ(child.ReadErr(1, std::chrono::seconds(10)), "Error: Could not open for summary/plot.gp");
  EXPECT_EQ(child.Wait(), 1);
}

TEST(WriteSummaryPlot, HoldsTheLargestNumbers) {
  const ScratchFolder folder;
  std::filesystem::create_directory(folder.Path("summary"));
  CState state;
  CMapFile map(state);
  CDataset curve = Curve(-1.7e308, 's', 1, 1);
  curve.dataset_qz[0] = -1.7e308;
  for (double* value : {&curve.datasetray1sigmare, &curve.datasetray1pire}) *value = -1.7e308;
  map.constenergy.Append(curve);
  EXPECT_EQ(Write(folder, map), 0);
  EXPECT_TRUE(folder.Read("summary/plot.gp").ends_with("\"\n"));
}

}  // namespace
}  // namespace tolvik
