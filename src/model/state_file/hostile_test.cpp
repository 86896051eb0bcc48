// SPDX-License-Identifier: GPL-2.0-or-later
// Files made to break a reader.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <string>

#include "support/scratch.h"
#include "tolvik/state_file.h"

namespace tolvik {
namespace {

CState Read(std::string_view text) {
  CState state;
  EXPECT_TRUE(ReadState(state, text, "a.state"));
  return state;
}

long PeakMemoryKb() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

TEST(HostileState, HugeCountsTakeNoMemory) {
  const long before = PeakMemoryKb();
  const std::string count = "2000000000";
  // A name takes the rest of the file, so the first row is complete: of the 2e9 others only a few are made.
  CState state = Read("layerversion = 1\n#\n" + count + "\n#\n#\n1 a 0 0 0 0 0\n");
  EXPECT_GE(state.layers.size, 1);
  EXPECT_LE(state.layers.size, 1000);
  for (const char* version : {"1", "2", "3"}) {
    state = Read(std::string("magneticversion = ") + version + "\n#\n" + count + "\n#\n#\n#\n#\n#\n1 2 3\n");
    EXPECT_LE(state.gaussfunctions.size, 1000);
  }
  state = Read("magneticversion = 3\n#\n1\n#\n#\n#\n#\n#\n1 2 3 4 0 0 0 0 0 0 0 " + count + " 1 2 3 4 5\n");
  EXPECT_EQ(state.gaussfunctions[0].gauss_splinex.size, 2) << "pairs that the file holds";
  state = Read("measurementdataversion = 1\n#\n" + count + "\n#\n1 2 3\n");
  EXPECT_LE(state.datasets[1].dataset_qz.size, 1000);
  EXPECT_EQ(state.datasets[1].dataset_A[0], 3);
  EXPECT_LT(PeakMemoryKb() - before, 50000);
}

TEST(HostileState, LongTablesKeepAllTheirRows) {
  std::string text = "measurementdataversion = 1\n#\n5000\n#\n";
  for (int i = 0; i < 5000; ++i) text += "1 2 3\n";
  EXPECT_EQ(Read(text).datasets[1].dataset_A[4999], 3);
  text = "magneticversion = 1\n#\n3000\n#\n#\n#\n#\n#\n";
  for (int i = 0; i < 3000; ++i) text += "7 1 1 0 0 0 0 0 0 0\n\n";
  const CState gauss = Read(text + "qzmax = 5\n");
  EXPECT_EQ(gauss.gaussfunctions[2999].gauss_delta, 7);
  EXPECT_EQ(gauss.qzmax, 5);
  text = "layerversion = 1\n#\n4000\n#\n#\n";
  for (int i = 0; i < 4000; ++i) text += "1 a 0 0 0 0 0\n";
  EXPECT_EQ(Read(text).layers.size, 4000);
}

TEST(HostileState, NegativeAndBadCountsAreNone) {
  for (const char* count : {"-1", "-2000000000", "-99999999999999999999", "none", ""}) {
    EXPECT_EQ(Read(std::string("layerversion = 1\n#\n") + count + "\n").layers.size, 0) << count;
    EXPECT_EQ(Read(std::string("magneticversion = 1\n#\n") + count + "\n").gaussfunctions.size, 0) << count;
    EXPECT_EQ(Read(std::string("measurementdataversion = 1\n#\n") + count + "\n").datasets.size, 1) << count;
  }
}

TEST(HostileState, KeysBeforeTheirRecordAreIgnored) {
  const CState state = Read(
      "layerversion=3\nlayer_d=1\nlayer_z=1\nlayer_db=x\nlayer_sigma=1\n"
      "el_f1=1\nel_f2=1\nel_layer=0\nel_d=1\nel_density=1\nel_sigma=1\nfit_id=1\nfit_value=1\n");
  EXPECT_EQ(state.layers.size, 0);
  EXPECT_EQ(state.elementlayers.size, 0);
  EXPECT_EQ(state.fitvariables.size, 0);
  EXPECT_EQ(Read("element=Fe\nel_d=1\nel_sigma=2\n").elementlayers[0].slices.size, 0);
}

TEST(HostileState, EndlessLinesOfAllKinds) {
  const std::string endless(4 << 20, '9');
  EXPECT_EQ(Read("# " + endless + "\nqzmax=1").qzmax, 1);
  EXPECT_EQ(Read(endless + "\nqzmax=1").qzmax, 1);
  EXPECT_EQ(Read(endless + "=1\nqzmax=1").qzmax, 1);
  EXPECT_EQ(Read("qzmax=" + endless).qzmax, std::numeric_limits<double>::max());
  EXPECT_EQ(Read("numberofpoints=" + endless).numberofpoints, std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(Read("datasetnumber=1\ndatasettitle=" + endless + "\ndataset_qz=1").datasets[0].datasettitle.size,
            (4 << 20) + 1);
  EXPECT_EQ(Read("qzmax=1\n" + std::string(4 << 20, '\r') + "\n" + std::string(4 << 20, ' ')).qzmax, 1);
}

TEST(HostileState, NulBytesAnywhere) {
  using namespace std::string_literals;
  const CState state = Read("\0\0\n\0=\0\nqz\0max=3\nqzmax=2\0\0\nlayer_db=a\0b\nscriptline=\0x\n\0"s);
  EXPECT_EQ(state.qzmax, 2);
  EXPECT_EQ(state.layers[1].layer_db, "a");
  EXPECT_EQ(state.scriptlines[0], "");
}

TEST(HostileState, HalfOfAnyFileLoads) {
  CState full;
  full.gaussfunctions.Append(CGaussFunction());
  full.fitvariables.Append(CFitVariable());
  full.elementlayers.Append(CElementLayer());
  full.elementlayers[0].slices.Append(CElementSlice());
  full.datasets.Append(CDataset());
  full.datasets[0].dataset_qz.Append(1);
  const std::string text = FormatState(full);
  for (std::size_t length = 0; length < text.size(); length += 7) {
    CState state;
    // Only a file that is cut inside "fileversion = 1" counts as one of another version.
    const bool cut = text.substr(0, length).ends_with("fileversion = ") ||
                     text.substr(0, length).ends_with("fileversion =");
    EXPECT_EQ(ReadState(state, text.substr(0, length), ""), !cut) << length;
  }
}

TEST(HostileState, ArraysOfUnequalLengthAreWrittenAsTheyAre) {
  CState state;
  CDataset dataset;
  dataset.dataset_qz.Append(1);
  dataset.dataset_qz.Append(2);
  dataset.dataset_R0.Append(3);
  for (int i = 0; i < 5; ++i) dataset.dataset_eng.Append(i);
  state.datasets.Append(dataset);
  state.gaussfunctions.Append(CGaussFunction());
  state.gaussfunctions[0].gauss_splinex.Append(1);
  const CState again = Read(FormatState(state));
  EXPECT_EQ(again.datasets[1].dataset_qz.size, 2);
  EXPECT_EQ(again.datasets[1].dataset_R0.size, 1);
  EXPECT_EQ(again.datasets[1].dataset_eng.size, 2);
  EXPECT_EQ(again.gaussfunctions[0].gauss_spliney.size, 0);
}

}  // namespace
}  // namespace tolvik
