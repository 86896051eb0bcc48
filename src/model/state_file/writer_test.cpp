// SPDX-License-Identifier: GPL-2.0-or-later
// The written file byte for byte. The expected texts are typed from the description of the format.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>

#include "optics/energy.h"
#include "support/scratch.h"
#include "tolvik/state_file.h"

namespace tolvik {
namespace {

constexpr const char* kHead =
    "# Complete Status of Tolvik\n"
    "# File Version\n"
    "fileversion = 1\n"
    "\n";

constexpr const char* kDefaultLayers =
    "# layer configuration\n"
    "layerversion = 3\n"
    "# layer 0\n"
    " layer = 0\n"
    "  layer_d = 0\n"
    "  layer_db = vacuum\n"
    "  layer_material = \n"
    "  layer_density = 0\n"
    "  layer_delta = 0\n"
    "  layer_beta = 0\n"
    "  layer_ddelta = 0\n"
    "  layer_dbeta = 0\n"
    "  layer_sigma = 0\n"
    "\n"
    "# layer 1\n"
    " layer = 1\n"
    "  layer_d = 0\n"
    "  layer_db = vacuum\n"
    "  layer_material = \n"
    "  layer_density = 0\n"
    "  layer_delta = 0\n"
    "  layer_beta = 0\n"
    "  layer_ddelta = 0\n"
    "  layer_dbeta = 0\n"
    "  layer_sigma = 0\n"
    "\n"
    "\n";

constexpr const char* kNoRecords =
    "# element configuration\n"
    "elementlayerversion = 1\n"
    "# magnetic configuration with gauss\n"
    "magneticversion = 4\n"
    "\n"
    "# fit variables\n"
    "fitvariableversion = 1\n"
    "\n"
    "\n";

constexpr const char* kSettings =
    "# mode (material or element)\nmode = 0\n\n"
    "# numerical precision\nprecision = 1\n\n"
    "# disable script\ndisablescript = 0\n\n"
    "# energy (saved for compatibility)\nenergy = 8048\n\n\n"
    "# resolution\nresolution = 0\n\n"
    "# max qz to show\nqzmax = 0\n\n"
    "# number of points to show\nnumberofpoints = 200\n\n"
    "# averaging value\naveraging = 0\n\n"
    "# temperature for fitting\nfittemp = 0\n\n"
    "# delta temperature for fitting\nfitdtemp = 0\n\n"
    "# minimum qz for fitting\nfitqzmin = 0\n\n"
    "# maximum qz for fitting\nfitqzmax = 10\n\n"
    "# fast calculation of resolution\nfastresolution = 0\n\n"
    "# use measurement data for determine qz\nusemeasurementqz = 0\n\n"
    "# show qz(false) or angle (true)\nshowangle = 0\n\n"
    "# fit algorithm\nfitalgorithm = 0\n\n"
    "# fit error function\nfiterrorfunction = 0\n\n"
    "# fit resolution\nfitresolution = 0\n\n"
    "# fit asymmetry (with magnetic field)\nfitasymmetry = 0\n\n"
    "# gausscoupling algorithm\ngausscoupling = 0\n\n"
    "# multi slicing mode (0=roughness approx. ...)\nlayersegmentationmode = 0\n\n"
    "# algorithm (0=Parratt. ...)\nalgorithm = 0\n\n"
    "# scattering type (0=reflection, 1=transmission)\nscattering = 0\n\n"
    "# fit measurement multiplicator\nfitmeasmult = 0\n\n"
    "# fit delta qz\nfitdeltaqz = 0\n\n"
    "# energy scan qz\nengscanqz = 0\n\n"
    "# energy scan min\nengscanmin = 0\n\n"
    "# energy scan max\nengscanmax = 0\n\n"
    "# polarization of sigma part and pi part in complex numbers\n"
    "ray1sigmare = 1\nray1sigmaim = 0\nray1pire = 0\nray1piim = 0\n"
    "ray2sigmare = 0\nray2sigmaim = 0\nray2pire = 1\nray2piim = 0\n\n"
    "# minimal layer thickness\nminlayerthickness = 0\n\n"
    "# maximal layer thickness\nmaxlayerthickness = 0\n\n"
    "# gradient scale\ngradientscale = 0\n\n"
    "# segmentation model\nsegmentationmodel = 2\n\n"
    "# use magnetization\nmagnetizationmode = 0\n\n"
    "# magnetization direction\nmaggamma = 0\n\nmagphi = 0\n\n"
    "# random number seed\nevo_random = 0\n\n"
    "# population\nevo_population = 50\n\n"
    "# percent elite of population\nevo_elite = 0\n\n"
    "# percent of parents\nevo_parents = 0\n\n"
    "# mutation range in real numbers in percent\nevo_range = 0\n\n"
    "# probability of mixing\nevo_mixing = 0\n\n"
    "# probability of mutation\nevo_probability = 0\n\n"
    "# take elite as parents\nevo_takeeliteasparents = 0\n\n"
    "# restrict fit parameters\nevo_evorestrictfitparameters = 0\n\n"
    "# optical constant handling\nocautomatic = 0\n\n";

constexpr const char* kNoScripts =
    "# script parameters\n"
    "# script before calculation\n"
    "\n"
    "# default script\n"
    "\n";

constexpr const char* kNoMeasurements =
    "# active data set index\n"
    "activedatasetindex = 0\n"
    "# measurement data\n"
    "measurementdataversion = 2\n";

CState StateAt8048eV() {
  CState state;
  state.lambda = LambdaFromEnergy(8048);
  return state;
}

std::string WholeFile(const std::string& layers, const std::string& records, const std::string& scripts,
                      const std::string& measurements) {
  return kHead + layers + records + kSettings + scripts + measurements;
}

void ExpectSameText(const std::string& found, const std::string& expected) {
  const auto at = std::mismatch(found.begin(), found.end(), expected.begin(), expected.end());
  EXPECT_TRUE(found == expected) << "found:\n"
                                 << std::string(at.first, found.end()).substr(0, 200) << "\nexpected:\n"
                                 << std::string(at.second, expected.end()).substr(0, 200);
}

TEST(StateWriter, DefaultState) {
  ExpectSameText(FormatState(StateAt8048eV()),
                 WholeFile(kDefaultLayers, kNoRecords, kNoScripts, kNoMeasurements));
}

TEST(StateWriter, LayersWithTextsAndSixDigits) {
  CState state = StateAt8048eV();
  state.layers.Clear();
  CLayer layer;
  layer.layer_z = 99;  // derived, not written
  layer.layer_d = 27.1234567;
  layer.layer_db = "Mo bulk";
  layer.layer_material = "Mo";
  layer.layer_density = 10.28;
  layer.layer_delta = 2.8762345e-05;
  layer.layer_beta = 1.8e-06;
  layer.layer_ddelta = -1e-07;
  layer.layer_dbeta = 1234567;
  layer.layer_sigma = 3.25;
  state.layers.Append(layer);
  ExpectSameText(FormatState(state), WholeFile("# layer configuration\n"
                                               "layerversion = 3\n"
                                               "# layer 0\n"
                                               " layer = 0\n"
                                               "  layer_d = 27.1235\n"
                                               "  layer_db = Mo bulk\n"
                                               "  layer_material = Mo\n"
                                               "  layer_density = 10.28\n"
                                               "  layer_delta = 2.87623e-05\n"
                                               "  layer_beta = 1.8e-06\n"
                                               "  layer_ddelta = -1e-07\n"
                                               "  layer_dbeta = 1.23457e+06\n"
                                               "  layer_sigma = 3.25\n"
                                               "\n"
                                               "\n",
                                               kNoRecords, kNoScripts, kNoMeasurements));
}

TEST(StateWriter, ElementsGaussFunctionsAndFitVariables) {
  CState state = StateAt8048eV();
  CElementLayer element;
  element.element = "Fe";
  element.el_f1 = 26.5;
  element.el_f2 = -3;
  CElementSlice slice;
  slice.el_d = 12;
  slice.el_density = 0.085;
  slice.el_sigma = 2;
  element.slices.Append(slice);
  element.slices.Append(CElementSlice());
  state.elementlayers.Append(element);

  CGaussFunction gauss;
  gauss.gauss_delta = 1e-06;
  gauss.gauss_beta = 2e-06;
  gauss.gauss_variance = 4.5;
  gauss.gauss_z = 31;
  gauss.gauss_fit = true;
  gauss.gauss_fitz = true;
  gauss.gauss_usespline = true;
  gauss.gauss_varcoupling = 0;
  gauss.gauss_bindtolayer = 2;
  gauss.gauss_splinex.Append(-1);
  gauss.gauss_spliney.Append(0.5);
  gauss.gauss_splinex.Append(1);
  gauss.gauss_spliney.Append(0.25);
  state.gaussfunctions.Append(gauss);
  state.gaussfunctions.Append(CGaussFunction());

  CFitVariable variable;
  variable.fit_id = FitKind::kMultiplicator;
  variable.fit_additional_id = 3;
  variable.fit_value = 1.5;
  variable.fit_delta = 0.1;
  state.fitvariables.Append(variable);
  variable.fit_id = FitKind::kElementDensity;  // an element variable: no name above it
  variable.fit_element_id = 1;
  variable.fit_lower_boundary = 0;
  variable.fit_upper_boundary = 100;
  state.fitvariables.Append(variable);

  ExpectSameText(FormatState(state), WholeFile(kDefaultLayers,
                                               "# element configuration\n"
                                               "elementlayerversion = 1\n"
                                               " element = Fe\n"
                                               " el_f1 = 26.5\n"
                                               " el_f2 = -3\n"
                                               "  el_layer = 0\n"
                                               "  el_d = 12\n"
                                               "  el_density = 0.085\n"
                                               "  el_sigma = 2\n"
                                               "  el_layer = 1\n"
                                               "  el_d = 0\n"
                                               "  el_density = 0\n"
                                               "  el_sigma = 0\n"
                                               "# magnetic configuration with gauss\n"
                                               "magneticversion = 4\n"
                                               "# gauss function 1\n"
                                               " gauss_function = 1\n"
                                               " gauss_delta = 1e-06\n"
                                               " gauss_beta = 2e-06\n"
                                               " gauss_variance= 4.5\n"
                                               " gauss_z = 31\n"
                                               " gauss_fit = 1\n"
                                               " gauss_fita = 0\n"
                                               " gauss_fitvar = 0\n"
                                               " gauss_fitz = 1\n"
                                               " gauss_usespline = 1\n"
                                               " gauss_acoupling = -1\n"
                                               " gauss_varcoupling = 0\n"
                                               " gauss_bindtolayer = 2\n"
                                               " gauss_splinepoints= 2\n"
                                               "  gauss_splinex = -1\n"
                                               "  gauss_spliney = 0.5\n"
                                               "  gauss_splinex = 1\n"
                                               "  gauss_spliney = 0.25\n"
                                               "\n"
                                               "# gauss function 2\n"
                                               " gauss_function = 2\n"
                                               " gauss_delta = 0\n"
                                               " gauss_beta = 0\n"
                                               " gauss_variance= 1\n"
                                               " gauss_z = 0\n"
                                               " gauss_fit = 0\n"
                                               " gauss_fita = 0\n"
                                               " gauss_fitvar = 0\n"
                                               " gauss_fitz = 0\n"
                                               " gauss_usespline = 0\n"
                                               " gauss_acoupling = -1\n"
                                               " gauss_varcoupling = -1\n"
                                               " gauss_bindtolayer = -1\n"
                                               " gauss_splinepoints= 0\n"
                                               "\n"
                                               "\n"
                                               "# fit variables\n"
                                               "fitvariableversion = 1\n"
                                               "# meas. mult.\n"
                                               " fit_variable = 1\n"
                                               "  fit_id = 7\n"
                                               "  fit_additional_id = 3\n"
                                               "  fit_element_id = -1\n"
                                               "  fit_value = 1.5\n"
                                               "  fit_delta = 0.1\n"
                                               "  fit_lower_boundary = -1e+10\n"
                                               "  fit_upper_boundary = 1e+10\n"
                                               "\n"
                                               " fit_variable = 2\n"
                                               "  fit_id = 14\n"
                                               "  fit_additional_id = 3\n"
                                               "  fit_element_id = 1\n"
                                               "  fit_value = 1.5\n"
                                               "  fit_delta = 0.1\n"
                                               "  fit_lower_boundary = 0\n"
                                               "  fit_upper_boundary = 100\n"
                                               "\n"
                                               "\n"
                                               "\n",
                                               kNoScripts, kNoMeasurements));
}

TEST(StateWriter, EachKindOfVariableHasItsName) {
  const char* names[] = {"thickness",  "delta",      "beta",        "sigma",       "deltam",
                         "betam",      "resolution", "meas. mult.", "qz movement", "gauss delta",
                         "gauss beta", "gauss var.", "gauss z",     "script"};
  for (std::int32_t id = 0; id < 14; ++id) {
    CState state;
    CFitVariable variable;
    variable.fit_id = id;
    state.fitvariables.Append(variable);
    const std::string expected =
        std::string("fitvariableversion = 1\n# ") + names[id] + "\n fit_variable = 1\n";
    EXPECT_NE(FormatState(state).find(expected), std::string::npos) << id;
  }
  CState state;
  state.fitvariables.Append(CFitVariable());
  for (std::int32_t id : {14, 1000, -1, -2000000000}) {
    state.fitvariables[0].fit_id = id;
    EXPECT_NE(FormatState(state).find("fitvariableversion = 1\n fit_variable = 1\n"), std::string::npos)
        << id;
  }
}

TEST(StateWriter, ScriptsAndParameters) {
  CState state = StateAt8048eV();
  state.scriptparameters.Append(0.1);
  state.scriptparameters.Append(-2);
  state.scriptlines.Append(" function Start()");
  state.scriptlines.Append("");
  state.defaultscriptlines.Append("x = 1");
  ExpectSameText(FormatState(state), WholeFile(kDefaultLayers, kNoRecords,
                                               "# script parameters\n"
                                               "scriptparameters = 0.1\n"
                                               "scriptparameters = -2\n"
                                               "# script before calculation\n"
                                               "scriptline =  function Start()\n"
                                               "scriptline = \n"
                                               "\n"
                                               "# default script\n"
                                               "defaultscriptline = x = 1\n"
                                               "\n",
                                               kNoMeasurements));
}

TEST(StateWriter, NumbersNeedNoLocaleAndNoFiniteValue) {
  CState state;
  state.qzmax = std::numeric_limits<double>::quiet_NaN();
  state.resolution = -std::numeric_limits<double>::infinity();
  const std::string text = FormatState(state);
  EXPECT_NE(text.find("\nqzmax = nan\n"), std::string::npos);
  EXPECT_NE(text.find("\nresolution = -inf\n"), std::string::npos);
  EXPECT_NE(text.find("\nenergy = inf\n"), std::string::npos) << "lambda is 0 in a fresh state";
}

TEST(StateWriter, SaveStateWritesThisText) {
  const testing::ScratchFolder folder;
  const CState state = StateAt8048eV();
  ASSERT_TRUE(SaveState(state, folder.Path("a.state")));
  EXPECT_EQ(folder.Read("a.state"), FormatState(state));
}

}  // namespace
}  // namespace tolvik
