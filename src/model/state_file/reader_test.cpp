// SPDX-License-Identifier: GPL-2.0-or-later
// Single settings, versions and the end of a state file.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <string>
#include <thread>

#include "support/scratch.h"
#include "tolvik/state_file.h"

namespace tolvik {
namespace {

CState Read(std::string_view text) {
  CState state;
  EXPECT_TRUE(ReadState(state, text, "a.state"));
  return state;
}

TEST(StateReader, EmptyFileLoadsWithTheDefaultLayers) {
  const testing::ScratchFolder folder;
  CState state;
  ASSERT_TRUE(LoadState(state, folder.Write("empty.state", "")));
  EXPECT_EQ(state.layers.size, 2);
  EXPECT_EQ(state.layers[0].layer_db, "vacuum");
  EXPECT_EQ(state.datasets.size, 0);
}

TEST(StateReader, MissingFileAndFolderAreRefused) {
  const testing::ScratchFolder folder;
  CState state;
  EXPECT_FALSE(LoadState(state, folder.Path("missing.state")));
  EXPECT_FALSE(LoadState(state, folder.Path("")));
  EXPECT_FALSE(LoadState(state, ""));
}

TEST(StateReader, APipeLoadsToItsEnd) {
  const testing::ScratchFolder folder;
  const std::string name = folder.Path("pipe");
  ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
  std::thread writer([&] {
    std::ofstream out(name);
    out << "qzmax = 2\n# " << std::string(300000, 'x') << std::flush << "\nresolution = 3";
  });
  CState state;
  EXPECT_TRUE(LoadState(state, name));
  writer.join();
  EXPECT_EQ(state.qzmax, 2);
  EXPECT_EQ(state.resolution, 3);
}

TEST(StateReader, FileVersionMustBeTheTextOne) {
  for (const char* version : {"1", " 1 ", "1 # comment", "1\r"}) {
    CState state;
    EXPECT_TRUE(ReadState(state, std::string("fileversion =") + version + "\nqzmax=2\n", "")) << version;
    EXPECT_EQ(state.qzmax, 2);
  }
  for (const char* version : {"2", "01", "1.0", "", "1x", "one"}) {
    CState state;
    EXPECT_FALSE(ReadState(state, std::string("qzmax=1\nfileversion=") + version + "\nqzmax=2\n", ""))
        << version;
    EXPECT_EQ(state.qzmax, 1) << "as far as it was read";
  }
}

TEST(StateReader, ScriptsAndPenaltyAreClearedAtEachLoad) {
  CState state;
  state.scriptparameters.Append(1);
  state.scriptlines.Append("x");
  state.defaultscriptlines.Append("y");
  state.fitpenalty = 3;
  ASSERT_TRUE(ReadState(state, "", ""));
  EXPECT_TRUE(state.scriptparameters.IsEmpty());
  EXPECT_TRUE(state.scriptlines.IsEmpty());
  EXPECT_TRUE(state.defaultscriptlines.IsEmpty());
  EXPECT_EQ(state.fitpenalty, 0);
}

TEST(StateReader, EverySingleSettingReachesItsMember) {
  const CState s = Read(
      "mode=1\nprecision=3\ndisablescript=1\nresolution=0.001\nqzmax=0.5\nnumberofpoints=77\naveraging=4\n"
      "fittemp=5\nfitdtemp=6\nfitqzmin=0.1\nfitqzmax=0.9\nfastresolution=1\nusemeasurementqz=1\nshowangle=2\n"
      "fitalgorithm=3\nfiterrorfunction=4\nfitresolution=1\nfitasymmetry=5\ngausscoupling=1\n"
      "layersegmentationmode=6\nalgorithm=7\nscattering=8\nfitmeasmult=1\nfitdeltaqz=1\nengscanqz=0.2\n"
      "engscanmin=700\nengscanmax=800\nray1sigmare=1.1\nray1sigmaim=1.2\nray1pire=1.3\nray1piim=1.4\n"
      "ray2sigmare=2.1\nray2sigmaim=2.2\nray2pire=2.3\nray2piim=2.4\nminlayerthickness=9\n"
      "maxlayerthickness=10\ngradientscale=11\nsegmentationmodel=12\nmagnetizationmode=13\nmaggamma=14\n"
      "magphi=15\nevo_random=4000000000\nevo_population=16\nevo_elite=17\nevo_parents=18\nevo_range=19\n"
      "evo_mixing=20\nevo_probability=21\nevo_takeeliteasparents=1\nevo_evorestrictfitparameters=1\n"
      "ocautomatic=22\nactivedatasetindex=23\nscriptparameters=1.5\nscriptparameters=2.5\n");
  EXPECT_EQ(s.mode, Mode::kElement);
  EXPECT_EQ(s.currentelement, 0) << "element mode";
  EXPECT_EQ(s.precision, Precision::kMpfr);
  EXPECT_EQ(s.disablescript, 1);
  EXPECT_EQ(s.resolution, 0.001);
  EXPECT_EQ(s.qzmax, 0.5);
  EXPECT_EQ(s.numberofpoints, 77);
  EXPECT_EQ(s.averaging, 4);
  EXPECT_EQ(s.fittemp, 5);
  EXPECT_EQ(s.fitdtemp, 6);
  EXPECT_EQ(s.fitqzmin, 0.1);
  EXPECT_EQ(s.fitqzmax, 0.9);
  EXPECT_TRUE(s.fastresolution && s.usemeasurementqz && s.fitresolution && s.gausscoupling);
  EXPECT_TRUE(s.fitmeasmult && s.fitdeltaqz && s.evo_takeeliteasparents && s.evo_evorestrictfitparameters);
  EXPECT_EQ(s.showangle, 2);
  EXPECT_EQ(s.fitalgorithm, 3);
  EXPECT_EQ(s.fiterrorfunction, 4);
  EXPECT_EQ(s.fitasymmetry, FitAsymmetry::kAsymmetryOverEnergy);
  EXPECT_EQ(s.layersegmentationmode, 6);
  EXPECT_EQ(s.algorithm, 7);
  EXPECT_EQ(s.scattering, 8);
  EXPECT_EQ(s.engscanqz, 0.2);
  EXPECT_EQ(s.engscanmin, 700);
  EXPECT_EQ(s.engscanmax, 800);
  const double rays[] = {s.ray1sigmare, s.ray1sigmaim, s.ray1pire, s.ray1piim,
                         s.ray2sigmare, s.ray2sigmaim, s.ray2pire, s.ray2piim};
  const double expected[] = {1.1, 1.2, 1.3, 1.4, 2.1, 2.2, 2.3, 2.4};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(rays[i], expected[i]) << i;
  EXPECT_EQ(s.minlayerthickness, 9);
  EXPECT_EQ(s.maxlayerthickness, 10);
  EXPECT_EQ(s.gradientscale, 11);
  EXPECT_EQ(s.segmentationmodel, 12);
  EXPECT_EQ(s.magnetizationmode, 13);
  EXPECT_EQ(s.maggamma, 14);
  EXPECT_EQ(s.magphi, 15);
  EXPECT_EQ(s.evo_random, 4000000000u);
  EXPECT_EQ(s.evo_population, 16);
  EXPECT_EQ(s.evo_elite, 17);
  EXPECT_EQ(s.evo_parents, 18);
  EXPECT_EQ(s.evo_range, 19);
  EXPECT_EQ(s.evo_mixing, 20);
  EXPECT_EQ(s.evo_probability, 21);
  EXPECT_EQ(s.ocautomatic, 22);
  EXPECT_EQ(s.activedatasetindex, 23);
  ASSERT_EQ(s.scriptparameters.size, 2);
  EXPECT_EQ(s.scriptparameters[1], 2.5);
}

TEST(StateReader, EnergyAndWavelength) {
  EXPECT_DOUBLE_EQ(Read("energy = 8048").lambda, 12398.326 / 8048);
  EXPECT_EQ(Read("energy = 0").lambda, 12398.326) << "0 eV reads as 1 eV";
  EXPECT_EQ(Read("energy = none").lambda, 12398.326);
  EXPECT_EQ(Read("lambda = 1.54").lambda, 1.54);
  EXPECT_EQ(Read("lambda = 0").lambda, 1.0);
  EXPECT_DOUBLE_EQ(Read("lambda = 1.5\nenergy =\n").lambda, 1.5) << "no value, no change";
}

TEST(StateReader, BadNumbersGiveWhatTheStreamGives) {
  EXPECT_EQ(Read("qzmax=3\nqzmax=abc").qzmax, 0);
  EXPECT_EQ(Read("qzmax=3\nqzmax=").qzmax, 3);
  EXPECT_EQ(Read("qzmax=3\nqzmax=   ").qzmax, 3);
  EXPECT_EQ(Read("qzmax=3\nqzmax=#5").qzmax, 3);
  EXPECT_EQ(Read("qzmax=1e400").qzmax, std::numeric_limits<double>::max());
  EXPECT_EQ(Read("numberofpoints=3.7").numberofpoints, 3);
  EXPECT_EQ(Read("numberofpoints=99999999999").numberofpoints, std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(Read("fastresolution=2").fastresolution, true);
  EXPECT_EQ(Read("fastresolution=true").fastresolution, false) << "words are not accepted";
}

TEST(StateReader, OldModesSetNewSettings) {
  CState state = Read("calcmode=2");
  EXPECT_EQ(state.layersegmentationmode, 2);
  EXPECT_EQ(state.magnetizationmode, MagnetizationMode::kGaussFunctions);
  state = Read("magnetizationmode=1\ncalcmode=1");
  EXPECT_EQ(state.layersegmentationmode, LayerSegmentationMode::kSlices);
  EXPECT_EQ(state.magnetizationmode, MagnetizationMode::kLayers);
  EXPECT_EQ(Read("fitmz=5").magnetizationmode, MagnetizationMode::kGaussFunctions);
  EXPECT_EQ(Read("magnetizationmode=1\nfitmz=0").magnetizationmode, MagnetizationMode::kNone);
}

TEST(StateReader, PiRatioSetsBothRays) {
  const CState state = Read("pipolratio=0.25");
  const double norm = std::sqrt(0.75 * 0.75 + 0.25 * 0.25);
  EXPECT_DOUBLE_EQ(state.ray1sigmare, 0.75 / norm);
  EXPECT_DOUBLE_EQ(state.ray1piim, 0.25 / norm);
  EXPECT_DOUBLE_EQ(state.ray2sigmare, 0.75 / norm);
  EXPECT_DOUBLE_EQ(state.ray2piim, -0.25 / norm);
  EXPECT_EQ(state.ray2pire, 0);
}

TEST(StateReader, MaterialModeKeepsTheElementSelector) {
  EXPECT_EQ(Read("mode=0").currentelement, -1);
  EXPECT_EQ(Read("mode=2").currentelement, -1);
  EXPECT_EQ(Read("mode=1").currentelement, 0);
}

TEST(StateReader, UnknownKeysAndOtherLinesAreIgnored) {
  const CState state =
      Read("newkey = 5\nQZMAX = 4\n\tqzmax = 4\nqzmax 4\n= 4\n\n#qzmax=4\nqzmax#=4\nresolution=1");
  EXPECT_EQ(state.qzmax, 0);
  EXPECT_EQ(state.resolution, 1);
}

TEST(StateReader, ScriptLinesKeepTheirBlanks) {
  const CState state =
      Read("scriptline =  x = 1 -- a\nscriptline=y\nscriptline = z # gone\ndefaultscriptline = d \n");
  ASSERT_EQ(state.scriptlines.size, 3);
  EXPECT_EQ(state.scriptlines[0], "  x = 1 -- a");
  EXPECT_EQ(state.scriptlines[1], "y");
  EXPECT_EQ(state.scriptlines[2], " z ") << "a # ends a script line on reading";
  ASSERT_EQ(state.defaultscriptlines.size, 1);
  EXPECT_EQ(state.defaultscriptlines[0], " d ");
}

TEST(StateReader, ScriptLineGainsABlankAtEachSaveAndLoad) {
  CState state;
  state.scriptlines.Append("x=1");
  for (const char* expected : {" x=1", "  x=1", "   x=1"}) {
    state = Read(FormatState(state));
    ASSERT_EQ(state.scriptlines.size, 1);
    EXPECT_EQ(state.scriptlines[0], expected);
  }
}

}  // namespace
}  // namespace tolvik
