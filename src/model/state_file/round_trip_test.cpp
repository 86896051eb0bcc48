// SPDX-License-Identifier: GPL-2.0-or-later
// A save and a load keep every saved member of a full state to 6 digits.
#include <gtest/gtest.h>

#include <cmath>
#include <locale>
#include <random>
#include <string>

#include "model/state_file/keys.h"
#include "model/state_file/setting_lines.h"
#include "model/state_file/settings.h"
#include "optics/energy.h"
#include "tolvik/state_file.h"

namespace tolvik {
namespace {

// Fills all members that have keys with distinct values.
class Filler {
 public:
  double Number() { return std::ldexp(mantissa_(random_), exponent_(random_)); }

  template <class Record>
  void Fill(Record& record, const keys::Field<Record>& field) {
    std::visit([&](auto member) { Fill(record.*member); }, field);
  }
  void Fill(double& value) { value = Number(); }
  void Fill(std::int32_t& value) { value = static_cast<std::int32_t>(random_()); }
  void Fill(std::uint32_t& value) { value = static_cast<std::uint32_t>(random_()); }
  void Fill(bool& value) { value = random_() % 2 == 0; }
  void Fill(CCharArray& value) { value.Set("text" + std::to_string(random_())); }
  void Fill(CArray<double>& values, int count) {
    for (int i = 0; i < count; ++i) values.Append(Number());
  }

 private:
  std::mt19937 random_{12345};
  std::uniform_real_distribution<double> mantissa_{-1, 1};
  std::uniform_int_distribution<int> exponent_{-80, 80};
};

CState FullState() {
  Filler filler;
  CState state;
  state.layers.Clear();
  for (int i = 0; i < 3; ++i) {
    state.layers.Append(CLayer());
    for (const auto& key : keys::kLayerKeys) filler.Fill(state.layers.Last(), key.field);
    state.elementlayers.Append(CElementLayer());
    for (const auto& key : keys::kElementKeys) filler.Fill(state.elementlayers.Last(), key.field);
    state.elementlayers.Last().slices.Append(CElementSlice());
    for (const auto& key : keys::kSliceKeys) filler.Fill(state.elementlayers.Last().slices.Last(), key.field);
    state.gaussfunctions.Append(CGaussFunction());
    for (const auto& key : keys::kGaussKeys) filler.Fill(state.gaussfunctions.Last(), key.field);
    for (const auto& key : keys::kSplineKeys) filler.Fill(state.gaussfunctions.Last().*key.field, 4);
    state.fitvariables.Append(CFitVariable());
    for (const auto& key : keys::kFitVariableKeys) filler.Fill(state.fitvariables.Last(), key.field);
    state.datasets.Append(CDataset());
    for (const auto& key : keys::kDatasetKeys) filler.Fill(state.datasets.Last(), key.field);
    for (const auto& key : keys::kPointKeys) filler.Fill(state.datasets.Last().*key.field, 50);
  }
  for (const auto& setting : keys::kSettingsAboveEnergy) filler.Fill(state, setting.field);
  for (const auto& setting : keys::kSettingsBelowEnergy) filler.Fill(state, setting.field);
  for (const auto& setting : keys::kActiveDataset) filler.Fill(state, setting.field);
  filler.Fill(state.scriptparameters, 4);
  state.lambda = 1.54056789;
  state.datasets[0].datasettitle = "Empty";
  return state;
}

void ExpectSame(double found, double saved) {
  EXPECT_NEAR(found, saved, 5e-6 * std::abs(saved));
}
void ExpectSame(std::int32_t found, std::int32_t saved) {
  EXPECT_EQ(found, saved);
}
void ExpectSame(std::uint32_t found, std::uint32_t saved) {
  EXPECT_EQ(found, saved);
}
void ExpectSame(bool found, bool saved) {
  EXPECT_EQ(found, saved);
}
void ExpectSame(const CCharArray& found, const CCharArray& saved) {
  EXPECT_EQ(found.View(), saved.View());
}

template <class Record, class List>
void ExpectSameFields(const Record& found, const Record& saved, const List& list) {
  for (const auto& key : list) {
    SCOPED_TRACE(key.start);
    std::visit([&](auto member) { ExpectSame(found.*member, saved.*member); }, key.field);
  }
}

template <class Record, class List>
void ExpectSameArrays(const Record& found, const Record& saved, const List& list) {
  for (const auto& key : list) {
    SCOPED_TRACE(key.start);
    const CArray<double>& values = found.*key.field;
    ASSERT_EQ(values.size, (saved.*key.field).size);
    for (std::int32_t i = 0; i < values.size; ++i) ExpectSame(values[i], (saved.*key.field)[i]);
  }
}

TEST(StateRoundTrip, KeepsEverySavedMemberToSixDigits) {
  const CState saved = FullState();
  CState found;
  ASSERT_TRUE(ReadState(found, FormatState(saved), ""));
  ASSERT_EQ(found.layers.size, 3);
  ASSERT_EQ(found.elementlayers.size, 3);
  ASSERT_EQ(found.gaussfunctions.size, 3);
  ASSERT_EQ(found.fitvariables.size, 3);
  ASSERT_EQ(found.datasets.size, 3);
  for (std::int32_t i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    ExpectSameFields(found.layers[i], saved.layers[i], keys::kLayerKeys);
    ExpectSameFields(found.elementlayers[i], saved.elementlayers[i], keys::kElementKeys);
    ASSERT_EQ(found.elementlayers[i].slices.size, 1);
    ExpectSameFields(found.elementlayers[i].slices[0], saved.elementlayers[i].slices[0], keys::kSliceKeys);
    ExpectSameFields(found.gaussfunctions[i], saved.gaussfunctions[i], keys::kGaussKeys);
    ExpectSameArrays(found.gaussfunctions[i], saved.gaussfunctions[i], keys::kSplineKeys);
    ExpectSameFields(found.fitvariables[i], saved.fitvariables[i], keys::kFitVariableKeys);
    if (i == 0) continue;  // the empty dataset is rebuilt
    ExpectSameFields(found.datasets[i], saved.datasets[i], keys::kDatasetKeys);
    ExpectSameArrays(found.datasets[i], saved.datasets[i], keys::kPointKeys);
  }
  ExpectSameFields(found, saved, keys::kSettingsAboveEnergy);
  ExpectSameFields(found, saved, keys::kSettingsBelowEnergy);
  ExpectSameFields(found, saved, keys::kActiveDataset);
  ExpectSame(found.lambda, saved.lambda);
  ASSERT_EQ(found.scriptparameters.size, 4);
  for (int i = 0; i < 4; ++i) ExpectSame(found.scriptparameters[i], saved.scriptparameters[i]);
}

// Texts of 17 digits are equal when all numbers are.
TEST(StateRoundTrip, AnExactFileKeepsEveryBit) {
  CState saved = FullState();
  saved.lambda = LambdaFromEnergy(9876.54321012345);
  saved.scriptlines.Append(" x = 1");
  saved.scriptlines.Append("\ty = 2");
  const std::string text = FormatState(saved, StateDigits::kExact);
  CState found;
  ASSERT_TRUE(ReadState(found, text, ""));
  EXPECT_EQ(FormatState(found, StateDigits::kExact), text);
  EXPECT_EQ(found.lambda, saved.lambda);
  EXPECT_EQ(found.layers[1].layer_delta, saved.layers[1].layer_delta);
  EXPECT_EQ(found.scriptlines, saved.scriptlines);
}

TEST(StateRoundTrip, AnExactFileHasTheKeysOfAnyOther) {
  const auto keys_of = [](const std::string& text) {
    SettingLines lines(text);
    SettingLine line;
    std::string found;
    while (lines.Next(line)) found.append(line.key).append("\n");
    return found;
  };
  const CState state = FullState();
  EXPECT_EQ(keys_of(FormatState(state, StateDigits::kExact)), keys_of(FormatState(state)));
}

TEST(StateRoundTrip, SecondSaveIsTheSameFile) {
  const std::string first = FormatState(FullState());
  CState state;
  ASSERT_TRUE(ReadState(state, first, ""));
  EXPECT_EQ(FormatState(state), first);
}

// Numbers as in many countries of Europe: a decimal comma, points between thousands.
class CommaNumbers : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(StateRoundTrip, TheLocaleOfTheProcessDoesNotMatter) {
  const std::string plain = FormatState(FullState());
  const std::string table =
      "magneticversion = 3\n#\n1\n#\n#\n#\n#\n#\n0.5 1.5 2000.25 +3.5 1 1 1 1 1 2 3 0\n\nqzmax=+1.5\n";
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
  const std::string written = FormatState(FullState());
  CState state, old;
  ReadState(state, plain, "");
  ReadState(old, table, "");
  std::locale::global(before);
  EXPECT_EQ(written, plain);
  EXPECT_EQ(FormatState(state), plain);
  ASSERT_EQ(old.gaussfunctions.size, 1);
  EXPECT_EQ(old.gaussfunctions[0].gauss_variance, 2000.25);
  EXPECT_EQ(old.gaussfunctions[0].gauss_z, 3.5);
  EXPECT_EQ(old.qzmax, 1.5);
}

TEST(StateRoundTrip, EnergyAndQzAreRoundedToSixDigits) {
  CState saved;
  saved.lambda = LambdaFromEnergy(8047.8261);
  saved.datasets.Append(CDataset());
  saved.datasets[0].dataset_qz.Append(0.123456789);
  CState found;
  ASSERT_TRUE(ReadState(found, FormatState(saved), ""));
  EXPECT_DOUBLE_EQ(EnergyFromLambda(found.lambda), 8047.83);
  EXPECT_EQ(found.datasets[1].dataset_qz[0], 0.123457);
}

TEST(StateRoundTrip, ATitleLosesItsBlanks) {
  CState saved;
  saved.datasets.Append(CDataset());
  saved.datasets[0].dataset_qz.Append(1);
  saved.datasets[0].datasettitle = "my first scan";
  CState found;
  ASSERT_TRUE(ReadState(found, FormatState(saved), ""));
  EXPECT_EQ(found.datasets[1].datasettitle, "myfirstscan");
}

TEST(StateRoundTrip, RunTimeMembersAreNotSaved) {
  CState saved;
  saved.fitpenalty = 3;
  saved.epsilon = 1;
  saved.mulqz4 = 1;
  saved.polcorrection = 1;
  saved.kktableindex = 4;
  saved.maprange.n1 = 9;
  CState found;
  ASSERT_TRUE(ReadState(found, FormatState(saved), ""));
  EXPECT_EQ(found.fitpenalty, 0);
  EXPECT_EQ(found.epsilon, 5e-05);
  EXPECT_EQ(found.mulqz4, 0);
  EXPECT_EQ(found.polcorrection, 0);
  EXPECT_EQ(found.kktableindex, -1);
  EXPECT_EQ(found.maprange.n1, 1);
}

}  // namespace
}  // namespace tolvik
