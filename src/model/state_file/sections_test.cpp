// SPDX-License-Identifier: GPL-2.0-or-later
// The list sections of a state file: layers, elements, gauss functions, fit variables, datasets.
#include <gtest/gtest.h>

#include "optics/energy.h"
#include "tolvik/state_file.h"

namespace tolvik {
namespace {

CState Read(std::string_view text) {
  CState state;
  EXPECT_TRUE(ReadState(state, text, "a.state"));
  return state;
}

TEST(LayerSection, VersionKeyReplacesTheDefaultLayers) {
  const CState state = Read(
      "layerversion=3\n layer=0\n layer_db=Si\n layer_delta=1e-5\n layer_beta=1e-6\nlayer=7\nlayer_d=5\n"
      "layer_material=SiO2\nlayer_density=2.2\nlayer_ddelta=1e-7\nlayer_dbeta=2e-7\nlayer_sigma=3\n");
  ASSERT_EQ(state.layers.size, 2);
  EXPECT_EQ(state.layers[0].layer_db, "Si");
  EXPECT_EQ(state.layers[0].layer_delta, 1e-5);
  EXPECT_EQ(state.layers[0].layer_beta, 1e-6);
  EXPECT_EQ(state.layers[1].layer_db, "vacuum");
  EXPECT_EQ(state.layers[1].layer_d, 5);
  EXPECT_EQ(state.layers[1].layer_material, "SiO2");
  EXPECT_EQ(state.layers[1].layer_density, 2.2);
  EXPECT_EQ(state.layers[1].layer_ddelta, 1e-7);
  EXPECT_EQ(state.layers[1].layer_dbeta, 2e-7);
  EXPECT_EQ(state.layers[1].layer_sigma, 3);
}

TEST(LayerSection, WithoutVersionKeyLayersAreAppended) {
  const CState state = Read("layer_delta=3e-5\nlayer=2\nlayer_delta=1e-5\n");
  ASSERT_EQ(state.layers.size, 3);
  EXPECT_EQ(state.layers[1].layer_delta, 3e-5) << "the second default layer was the last one";
  EXPECT_EQ(state.layers[2].layer_delta, 1e-5);
}

TEST(LayerSection, ThicknessesGiveHeights) {
  const CState state =
      Read("layerversion=3\nlayer=0\nlayer_z=4\nlayer=1\nlayer_z=64\nlayer_d=30\nlayer=2\nlayer_d=2\n");
  EXPECT_EQ(state.layers[0].layer_z, 4);
  EXPECT_EQ(state.layers[1].layer_z, 34);
  EXPECT_EQ(state.layers[2].layer_z, 36);
}

TEST(LayerSection, HeightsGiveThicknesses) {
  const CState state = Read("layerversion=3\nlayer=0\nlayer_z=4\nlayer=1\nlayer_z=64\nlayer=2\nlayer_z=60\n");
  EXPECT_EQ(state.layers[0].layer_d, 0);
  EXPECT_EQ(state.layers[1].layer_d, 60);
  EXPECT_EQ(state.layers[2].layer_d, -4);
  EXPECT_EQ(state.layers[2].layer_z, 60);
}

TEST(LayerSection, LaterVersionsAlwaysStackThicknesses) {
  const CState state = Read("layerversion=4\nlayer=0\nlayer_z=4\nlayer=1\nlayer_z=64\n");
  EXPECT_EQ(state.layers[1].layer_z, 4) << "layer_d is 0";
}

TEST(LayerSection, TensorsAreBuiltAtTheEnd) {
  const CState state = Read(
      "layerversion=3\nlayer=0\nlayer_delta=0.25\nlayer_ddelta=0.1\nmaggamma=90\nmagphi="
      "90\nmagnetizationmode=2");
  EXPECT_EQ(state.layers[0].magnetic, 1);
  EXPECT_DOUBLE_EQ(state.layers[0].Epsilon(2, 2).real(), 0.75 * 0.75);
  EXPECT_DOUBLE_EQ(state.layers[0].Epsilon(0, 2).imag(), 2 * 0.75 * 0.75 * 0.1);  // 2i n² deltam
}

TEST(ElementSection, SlicesBelongToTheLastElement) {
  const CState state = Read(
      "elementlayerversion = 1\n element = Fe\n el_f1 = 20\n el_f2 = 6\n el_layer = 0\n el_d = 1\n"
      "el_layer = 1\n el_d = 5\n el_density = 0.08\n el_sigma = 2\n element = O\n el_layer = 0\n el_sigma = "
      "7\n");
  ASSERT_EQ(state.elementlayers.size, 2);
  const CElementLayer& iron = state.elementlayers[0];
  EXPECT_EQ(iron.element, "Fe");
  EXPECT_EQ(iron.el_f1, 20);
  EXPECT_EQ(iron.el_f2, 6);
  ASSERT_EQ(iron.slices.size, 2);
  EXPECT_EQ(iron.slices[0].el_d, 1);
  EXPECT_EQ(iron.slices[1].el_d, 5);
  EXPECT_EQ(iron.slices[1].el_density, 0.08);
  EXPECT_EQ(iron.slices[1].el_sigma, 2);
  EXPECT_EQ(state.elementlayers[1].slices[0].el_sigma, 7);
  EXPECT_EQ(Read("element=Fe\nelementlayerversion=1\n").elementlayers.size, 0);
}

TEST(GaussSection, LastFunctionAppearsAtTheEnd) {
  const CState state = Read(
      "magneticversion = 4\n gauss_function = 1\n gauss_delta=1\n gauss_beta=2\n gauss_variance= 3\n "
      "gauss_z=4\n"
      "gauss_fit=1\n gauss_fita=1\n gauss_fitvar=1\n gauss_fitz=1\n gauss_usespline=1\n gauss_acoupling=5\n"
      "gauss_varcoupling=6\n gauss_bindtolayer=7\n gauss_splinepoints= 9\n gauss_splinex=8\n "
      "gauss_spliney=9\n"
      " gauss_function = 2\n gauss_delta=10\n");
  ASSERT_EQ(state.gaussfunctions.size, 2);
  const CGaussFunction& first = state.gaussfunctions[0];
  EXPECT_EQ(first.gauss_delta, 1);
  EXPECT_EQ(first.gauss_beta, 2);
  EXPECT_EQ(first.gauss_variance, 3);
  EXPECT_EQ(first.gauss_z, 4);
  EXPECT_TRUE(first.gauss_fit && first.gauss_fita && first.gauss_fitvar && first.gauss_fitz &&
              first.gauss_usespline);
  EXPECT_EQ(first.gauss_acoupling, 5);
  EXPECT_EQ(first.gauss_varcoupling, 6);
  EXPECT_EQ(first.gauss_bindtolayer, 7);
  ASSERT_EQ(first.gauss_splinex.size, 1) << "the spline grows with its lines; gauss_splinepoints is not read";
  EXPECT_EQ(first.gauss_splinex[0], 8);
  EXPECT_EQ(first.gauss_spliney[0], 9);
  EXPECT_EQ(state.gaussfunctions[1].gauss_delta, 10);
  EXPECT_EQ(state.gaussfunctions[1].gauss_variance, 1) << "a new function begins with the defaults";
  EXPECT_EQ(state.gaussfunctions[1].gauss_splinex.size, 0);
  EXPECT_EQ(state.pendinggauss, 0);
}

TEST(GaussSection, KeysWithoutAFunctionAppendNothing) {
  EXPECT_EQ(Read("magneticversion=4\ngauss_delta=1\n").gaussfunctions.size, 0);
  const CState state = Read("gauss_delta=1\ngauss_function=1\n");
  ASSERT_EQ(state.gaussfunctions.size, 1);
  EXPECT_EQ(state.gaussfunctions[0].gauss_delta, 0) << "set before the function began";
}

TEST(GaussSection, VersionKeyDropsThePendingFunction) {
  EXPECT_EQ(Read("gauss_function=1\nmagneticversion=4\n").gaussfunctions.size, 0);
}

TEST(FitSection, VariablesHaveTheDefaultsOfTheReader) {
  const CState state = Read(
      "fit_value=9\nfitvariableversion=1\n fit_variable=1\n fit_variable=2\n fit_id=3\n fit_additional_id=4\n"
      "fit_element_id=5\n fit_value=6\n fit_delta=7\n fit_lower_boundary=8\n fit_upper_boundary=9\n");
  ASSERT_EQ(state.fitvariables.size, 2);
  const CFitVariable& fresh = state.fitvariables[0];
  EXPECT_EQ(fresh.fit_value, 0);
  EXPECT_EQ(fresh.fit_delta, 0.1);
  EXPECT_EQ(fresh.fit_upper_boundary, 1e10);
  EXPECT_EQ(fresh.fit_lower_boundary, -1e10);
  EXPECT_EQ(fresh.fit_additional_id, -1);
  EXPECT_EQ(fresh.fit_element_id, -1);
  const CFitVariable& variable = state.fitvariables[1];
  EXPECT_EQ(variable.fit_id, FitKind::kSigma);
  EXPECT_EQ(variable.fit_additional_id, 4);
  EXPECT_EQ(variable.fit_element_id, 5);
  EXPECT_EQ(variable.fit_value, 6);
  EXPECT_EQ(variable.fit_delta, 7);
  EXPECT_EQ(variable.fit_lower_boundary, 8);
  EXPECT_EQ(variable.fit_upper_boundary, 9);
}

TEST(DatasetSection, EmptyDatasetMirrorsTheState) {
  const CState state = Read("energy=700\nmeasurementdataversion=2\nenergy=8000\nresolution=0.01\n");
  ASSERT_EQ(state.datasets.size, 1);
  EXPECT_EQ(state.datasets[0].datasettitle, "Empty");
  EXPECT_EQ(state.datasets[0].datasetcomment, "This Dataset contains no data.");
  EXPECT_DOUBLE_EQ(state.datasets[0].datasetenergy, 8000) << "the energy at the end of the load";
  EXPECT_EQ(state.datasets[0].datasetresolution, 0.01);
  EXPECT_EQ(state.activedatasetindex, 0);
}

TEST(DatasetSection, EmptyOnlyIsNotWrittenAndComesBack) {
  const CState state = Read("measurementdataversion=2\n");
  const std::string text = FormatState(state);
  EXPECT_EQ(text.find("dataset 0"), std::string::npos);
  EXPECT_EQ(text.find("datasetnumber"), std::string::npos);
  const CState again = Read(text);
  ASSERT_EQ(again.datasets.size, 1);
  EXPECT_EQ(again.datasets[0].datasettitle, "Empty");
}

TEST(DatasetSection, ReadsAllOfADataset) {
  const CState state = Read(
      "measurementdataversion=2\ndatasetnumber=99\n datasettitle=a b c\n datasetenergy=700\n "
      "datasetresolution=0.1\n"
      "datasetmultiplicator=2\n datasettranslator=3\n datasetqztranslation=4\n datasetray1sigmare=11\n"
      "datasetray1sigmaim=12\n datasetray1pire=13\n datasetray1piim=14\n datasetray2sigmare=21\n"
      "datasetray2sigmaim=22\n datasetray2pire=23\n datasetray2piim=24\n datasetactive=1\n"
      "datasetcomment=no blanks # gone\n datasetfile=a.dat\n datasetpoints=2000000000\n"
      "dataset_qz=0.1\ndataset_R0=1\ndataset_A=2\ndataset_Rp=3\ndataset_Rm=4\ndataset_eng=5\n");
  ASSERT_EQ(state.datasets.size, 2);
  const CDataset& d = state.datasets[1];
  EXPECT_EQ(d.datasettitle, "abc") << "blanks are lost";
  EXPECT_EQ(d.datasetenergy, 700);
  EXPECT_EQ(d.datasetresolution, 0.1);
  EXPECT_EQ(d.datasetmultiplicator, 2);
  EXPECT_EQ(d.datasettranslator, 3);
  EXPECT_EQ(d.datasetqztranslation, 4);
  const double rays[] = {d.datasetray1sigmare, d.datasetray1sigmaim, d.datasetray1pire, d.datasetray1piim,
                         d.datasetray2sigmare, d.datasetray2sigmaim, d.datasetray2pire, d.datasetray2piim};
  const double expected[] = {11, 12, 13, 14, 21, 22, 23, 24};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(rays[i], expected[i]) << i;
  EXPECT_EQ(d.datasetactive, 1);
  EXPECT_EQ(d.datasetcomment, "noblanks");
  EXPECT_EQ(d.datasetfile, "a.dat");
  const CArray<double>* arrays[] = {&d.dataset_qz, &d.dataset_R0, &d.dataset_A,
                                    &d.dataset_Rp, &d.dataset_Rm, &d.dataset_eng};
  const double values[] = {0.1, 1, 2, 3, 4, 5};
  for (int i = 0; i < 6; ++i) {
    ASSERT_EQ(arrays[i]->size, 1) << i;
    EXPECT_EQ((*arrays[i])[0], values[i]) << i;
  }
}

TEST(DatasetSection, WithoutPointsADatasetIsDropped) {
  const CState state = Read(
      "measurementdataversion=2\ndatasetnumber=1\ndatasettitle=none\ndataset_R0=1\n"
      "datasetnumber=2\ndataset_qz=0.1\ndatasetnumber=3\ndatasettitle=last\n");
  ASSERT_EQ(state.datasets.size, 2);
  EXPECT_EQ(state.datasets[1].datasettitle, "") << "a new dataset begins with the defaults";
  EXPECT_EQ(state.datasets[1].dataset_R0.size, 0);
}

TEST(DatasetSection, WithoutVersionKeyTheFirstDatasetTakesTheStatesEnergy) {
  const CState state = Read("energy=8000\ndatasetnumber=0\ndatasetenergy=700\ndataset_qz=0.1\n");
  ASSERT_EQ(state.datasets.size, 1);
  EXPECT_DOUBLE_EQ(state.datasets[0].datasetenergy, 8000);
}

TEST(DatasetSection, OldDefaultsHoldForDatasetsThatFollow) {
  const CState state = Read(
      "measurementdataversion=2\ndatasetnumber=1\ndataset_qz=1\nmeasuremult=3\ndeltaqz=0.5\n"
      "datasetnumber=2\ndataset_qz=1\ndatasetlambda=2\ndatasetnumber=3\ndataset_qz=1\ndatasetmultiplicator="
      "7\n");
  ASSERT_EQ(state.datasets.size, 4);
  EXPECT_EQ(state.datasets[1].datasetmultiplicator, 1);
  EXPECT_EQ(state.datasets[1].datasetqztranslation, 0);
  EXPECT_EQ(state.datasets[2].datasetmultiplicator, 3);
  EXPECT_EQ(state.datasets[2].datasetqztranslation, 0.5);
  EXPECT_DOUBLE_EQ(state.datasets[2].datasetenergy, kEnergyTimesLambda / 2);
  EXPECT_EQ(state.datasets[3].datasetmultiplicator, 7);
  EXPECT_EQ(state.datasets[3].datasetqztranslation, 0.5);
}

TEST(DatasetSection, VersionKeyClearsWhatWasRead) {
  const CState state = Read("datasetnumber=1\ndataset_qz=1\ndatasetnumber=2\nmeasurementdataversion=2\n");
  ASSERT_EQ(state.datasets.size, 1);
  EXPECT_EQ(state.datasets[0].datasettitle, "Empty");
}

}  // namespace
}  // namespace tolvik
