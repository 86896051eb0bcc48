// SPDX-License-Identifier: GPL-2.0-or-later
// The keys of the state file, each told once for the reader and the writer: the literal start of its line,
// the member that it holds and, for single settings, the comment above it.
#pragma once

#include <cstdint>
#include <string_view>
#include <variant>

#include "tolvik/state.h"

namespace tolvik::keys {

/// A member of a record that one line of the file holds.
template <class Record>
using Field = std::variant<double Record::*, std::int32_t Record::*, std::uint32_t Record::*, bool Record::*,
                           CCharArray Record::*>;

/// One line of a record: how it starts in the file, indent and "=" included, and the member behind it.
template <class Record>
struct Key {
  std::string_view start;
  Field<Record> field;
};

/// A line that stands once for each element of an array of numbers.
template <class Record>
struct ArrayKey {
  std::string_view start;
  CArray<double> Record::*field;
};

/// A single setting of the state with the comment above it (none where several lines share one) and the empty
/// lines below it.
struct Setting {
  std::string_view start;
  Field<CState> field;
  std::string_view comment;
  int blank_lines = 1;
};

/// The key as the reader sees it: the start of a line without its blanks and "=".
constexpr std::string_view Name(std::string_view start) {
  start.remove_prefix(start.find_first_not_of(' '));
  return start.substr(0, start.find_first_of(" ="));
}

// Lines that begin a section, begin a record, count, or stand in a list of their own.
inline constexpr std::string_view kFileVersion = "fileversion = ";
inline constexpr std::string_view kLayerVersion = "layerversion = ";
inline constexpr std::string_view kLayer = " layer = ";
inline constexpr std::string_view kElementLayerVersion = "elementlayerversion = ";
inline constexpr std::string_view kElementSlice = "  el_layer = ";
inline constexpr std::string_view kMagneticVersion = "magneticversion = ";
inline constexpr std::string_view kGaussFunction = " gauss_function = ";
inline constexpr std::string_view kGaussSplinePoints = " gauss_splinepoints= ";
inline constexpr std::string_view kFitVariableVersion = "fitvariableversion = ";
inline constexpr std::string_view kFitVariable = " fit_variable = ";
inline constexpr std::string_view kScriptParameter = "scriptparameters = ";
inline constexpr std::string_view kScriptLine = "scriptline = ";
inline constexpr std::string_view kDefaultScriptLine = "defaultscriptline = ";
inline constexpr std::string_view kMeasurementDataVersion = "measurementdataversion = ";
inline constexpr std::string_view kDatasetNumber = "datasetnumber = ";
inline constexpr std::string_view kDatasetPoints = " datasetpoints = ";
/// The energy stands in the file for the wavelength of the record.
inline constexpr std::string_view kEnergy = "energy = ";

inline constexpr std::string_view kLayerThickness = "  layer_d = ";
inline constexpr Key<CLayer> kLayerKeys[] = {
    {kLayerThickness, &CLayer::layer_d},
    {"  layer_db = ", &CLayer::layer_db},
    {"  layer_material = ", &CLayer::layer_material},
    {"  layer_density = ", &CLayer::layer_density},
    {"  layer_delta = ", &CLayer::layer_delta},
    {"  layer_beta = ", &CLayer::layer_beta},
    {"  layer_ddelta = ", &CLayer::layer_ddelta},
    {"  layer_dbeta = ", &CLayer::layer_dbeta},
    {"  layer_sigma = ", &CLayer::layer_sigma},
};

/// Begins an element layer and names it.
inline constexpr std::string_view kElement = " element = ";
inline constexpr Key<CElementLayer> kElementKeys[] = {
    {kElement, &CElementLayer::element},
    {" el_f1 = ", &CElementLayer::el_f1},
    {" el_f2 = ", &CElementLayer::el_f2},
};

inline constexpr Key<CElementSlice> kSliceKeys[] = {
    {"  el_d = ", &CElementSlice::el_d},
    {"  el_density = ", &CElementSlice::el_density},
    {"  el_sigma = ", &CElementSlice::el_sigma},
};

// No blank before the "=" of gauss_variance and gauss_splinepoints: the files always looked like this.
inline constexpr Key<CGaussFunction> kGaussKeys[] = {
    {" gauss_delta = ", &CGaussFunction::gauss_delta},
    {" gauss_beta = ", &CGaussFunction::gauss_beta},
    {" gauss_variance= ", &CGaussFunction::gauss_variance},
    {" gauss_z = ", &CGaussFunction::gauss_z},
    {" gauss_fit = ", &CGaussFunction::gauss_fit},
    {" gauss_fita = ", &CGaussFunction::gauss_fita},
    {" gauss_fitvar = ", &CGaussFunction::gauss_fitvar},
    {" gauss_fitz = ", &CGaussFunction::gauss_fitz},
    {" gauss_usespline = ", &CGaussFunction::gauss_usespline},
    {" gauss_acoupling = ", &CGaussFunction::gauss_acoupling},
    {" gauss_varcoupling = ", &CGaussFunction::gauss_varcoupling},
    {" gauss_bindtolayer = ", &CGaussFunction::gauss_bindtolayer},
};

inline constexpr ArrayKey<CGaussFunction> kSplineKeys[] = {
    {"  gauss_splinex = ", &CGaussFunction::gauss_splinex},
    {"  gauss_spliney = ", &CGaussFunction::gauss_spliney},
};

inline constexpr Key<CFitVariable> kFitVariableKeys[] = {
    {"  fit_id = ", &CFitVariable::fit_id},
    {"  fit_additional_id = ", &CFitVariable::fit_additional_id},
    {"  fit_element_id = ", &CFitVariable::fit_element_id},
    {"  fit_value = ", &CFitVariable::fit_value},
    {"  fit_delta = ", &CFitVariable::fit_delta},
    {"  fit_lower_boundary = ", &CFitVariable::fit_lower_boundary},
    {"  fit_upper_boundary = ", &CFitVariable::fit_upper_boundary},
};

inline constexpr Key<CDataset> kDatasetKeys[] = {
    {" datasettitle = ", &CDataset::datasettitle},
    {" datasetenergy = ", &CDataset::datasetenergy},
    {" datasetresolution = ", &CDataset::datasetresolution},
    {" datasetmultiplicator = ", &CDataset::datasetmultiplicator},
    {" datasettranslator = ", &CDataset::datasettranslator},
    {" datasetqztranslation = ", &CDataset::datasetqztranslation},
    {" datasetray1sigmare = ", &CDataset::datasetray1sigmare},
    {" datasetray1sigmaim = ", &CDataset::datasetray1sigmaim},
    {" datasetray1pire = ", &CDataset::datasetray1pire},
    {" datasetray1piim = ", &CDataset::datasetray1piim},
    {" datasetray2sigmare = ", &CDataset::datasetray2sigmare},
    {" datasetray2sigmaim = ", &CDataset::datasetray2sigmaim},
    {" datasetray2pire = ", &CDataset::datasetray2pire},
    {" datasetray2piim = ", &CDataset::datasetray2piim},
    {" datasetactive = ", &CDataset::datasetactive},
    {" datasetcomment = ", &CDataset::datasetcomment},
    {" datasetfile = ", &CDataset::datasetfile},
};

/// Written for each point, all but the first only when the curve was measured.
inline constexpr ArrayKey<CDataset> kPointKeys[] = {
    {"  dataset_qz = ", &CDataset::dataset_qz}, {"  dataset_R0 = ", &CDataset::dataset_R0},
    {"  dataset_A = ", &CDataset::dataset_A},   {"  dataset_Rp = ", &CDataset::dataset_Rp},
    {"  dataset_Rm = ", &CDataset::dataset_Rm}, {"  dataset_eng = ", &CDataset::dataset_eng},
};

inline constexpr Setting kActiveDataset[] = {
    {"activedatasetindex = ", &CState::activedatasetindex, "# active data set index", 0},
};

}  // namespace tolvik::keys
