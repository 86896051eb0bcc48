// SPDX-License-Identifier: GPL-2.0-or-later
// The keys of the state file, in one table for the reader and the writer: the literal start of a line, its
// member and, for single settings, the comment above it.
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

/// One line of a record: its start in the file, indent and "=" included, its member, and its meaning, which
/// is not in the file.
template <class Record>
struct Key {
  std::string_view start;
  Field<Record> field;
  std::string_view meaning;
};

/// A line that is repeated for each element of an array of numbers.
template <class Record>
struct ArrayKey {
  std::string_view start;
  CArray<double> Record::*field;
  std::string_view meaning;
};

/// A single setting of the state, with the comment above it (none where several lines share one) and the
/// number of empty lines below it.
struct Setting {
  std::string_view start;
  Field<CState> field;
  std::string_view comment;
  int blank_lines = 1;
};

/// The key as the reader compares it: the start of a line without its blanks and "=".
constexpr std::string_view Name(std::string_view start) {
  start.remove_prefix(start.find_first_not_of(' '));
  return start.substr(0, start.find_first_of(" ="));
}

// Lines that begin a section, begin a record, count, or belong to a list of their own.
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
/// The file has the energy, the record the wavelength.
inline constexpr std::string_view kEnergy = "energy = ";

inline constexpr std::string_view kLayerThickness = "  layer_d = ";
inline constexpr Key<CLayer> kLayerKeys[] = {
    {kLayerThickness, &CLayer::layer_d, "thickness, Å; those of substrate and ambient do not matter"},
    {"  layer_db = ", &CLayer::layer_db, "stem of the layer's tables of optical constants, or just a name"},
    {"  layer_material = ", &CLayer::layer_material, "name of a material file, kept for a front end"},
    {"  layer_density = ", &CLayer::layer_density, "density, kept for a front end"},
    {"  layer_delta = ", &CLayer::layer_delta,
     "decrement of the index of refraction, n = 1 - delta + i beta"},
    {"  layer_beta = ", &CLayer::layer_beta, "absorption, imaginary part of the index of refraction"},
    {"  layer_ddelta = ", &CLayer::layer_ddelta, "magnetic part of delta"},
    {"  layer_dbeta = ", &CLayer::layer_dbeta, "magnetic part of beta"},
    {"  layer_sigma = ", &CLayer::layer_sigma, "roughness of the interface above the layer, Å"},
};

/// Begins an element layer and names it.
inline constexpr std::string_view kElement = " element = ";
inline constexpr Key<CElementLayer> kElementKeys[] = {
    {kElement, &CElementLayer::element, "chemical element, the stem of its .ff table"},
    {" el_f1 = ", &CElementLayer::el_f1, "real part of the atomic scattering factor"},
    {" el_f2 = ", &CElementLayer::el_f2, "imaginary part of the atomic scattering factor"},
};

inline constexpr Key<CElementSlice> kSliceKeys[] = {
    {"  el_d = ", &CElementSlice::el_d, "thickness of the slice, Å"},
    {"  el_density = ", &CElementSlice::el_density, "density of the element in the slice"},
    {"  el_sigma = ", &CElementSlice::el_sigma, "roughness of the slice, Å"},
};

// No blank before the "=" of gauss_variance and gauss_splinepoints, as in all existing files.
inline constexpr Key<CGaussFunction> kGaussKeys[] = {
    {" gauss_delta = ", &CGaussFunction::gauss_delta, "amplitude in delta"},
    {" gauss_beta = ", &CGaussFunction::gauss_beta, "amplitude in beta"},
    {" gauss_variance= ", &CGaussFunction::gauss_variance, "width, Å, used as a standard deviation"},
    {" gauss_z = ", &CGaussFunction::gauss_z, "centre, Å above the substrate"},
    {" gauss_fit = ", &CGaussFunction::gauss_fit, "the function takes part in a fit, for a front end"},
    {" gauss_fita = ", &CGaussFunction::gauss_fita, "its amplitude is fitted, for a front end"},
    {" gauss_fitvar = ", &CGaussFunction::gauss_fitvar, "its width is fitted, for a front end"},
    {" gauss_fitz = ", &CGaussFunction::gauss_fitz, "its centre is fitted, for a front end"},
    {" gauss_usespline = ", &CGaussFunction::gauss_usespline, "the spline replaces the gaussian"},
    {" gauss_acoupling = ", &CGaussFunction::gauss_acoupling,
     "function whose amplitude this one follows, -1 none; for a front end"},
    {" gauss_varcoupling = ", &CGaussFunction::gauss_varcoupling,
     "function whose width this one follows, -1 none; for a front end"},
    {" gauss_bindtolayer = ", &CGaussFunction::gauss_bindtolayer,
     "layer to which the function is confined, counted from the ambient (0) downwards, -1 all depths"},
};

inline constexpr ArrayKey<CGaussFunction> kSplineKeys[] = {
    {"  gauss_splinex = ", &CGaussFunction::gauss_splinex, "heights of the points of the spline, Å"},
    {"  gauss_spliney = ", &CGaussFunction::gauss_spliney, "values of the spline at these heights"},
};

inline constexpr Key<CFitVariable> kFitVariableKeys[] = {
    {"  fit_id = ", &CFitVariable::fit_id, "kind of the variable, the number that it changes"},
    {"  fit_additional_id = ", &CFitVariable::fit_additional_id,
     "layer, gauss function, script parameter or slice, counted from 0; -1 none"},
    {"  fit_element_id = ", &CFitVariable::fit_element_id, "element layer, counted from 0; -1 none"},
    {"  fit_value = ", &CFitVariable::fit_value, "present value"},
    {"  fit_delta = ", &CFitVariable::fit_delta, "step"},
    {"  fit_lower_boundary = ", &CFitVariable::fit_lower_boundary, "lower bound"},
    {"  fit_upper_boundary = ", &CFitVariable::fit_upper_boundary, "upper bound"},
};

inline constexpr Key<CDataset> kDatasetKeys[] = {
    {" datasettitle = ", &CDataset::datasettitle, "title"},
    {" datasetenergy = ", &CDataset::datasetenergy, "photon energy, eV"},
    {" datasetresolution = ", &CDataset::datasetresolution,
     "width of the qz resolution, Å⁻¹: two standard deviations"},
    {" datasetmultiplicator = ", &CDataset::datasetmultiplicator, "factor of the measured values"},
    {" datasettranslator = ", &CDataset::datasettranslator, "added to the measured values before the factor"},
    {" datasetqztranslation = ", &CDataset::datasetqztranslation, "added to the measured qz, Å⁻¹"},
    {" datasetray1sigmare = ", &CDataset::datasetray1sigmare, "first ray, sigma amplitude, real part"},
    {" datasetray1sigmaim = ", &CDataset::datasetray1sigmaim, "first ray, sigma amplitude, imaginary part"},
    {" datasetray1pire = ", &CDataset::datasetray1pire, "first ray, pi amplitude, real part"},
    {" datasetray1piim = ", &CDataset::datasetray1piim, "first ray, pi amplitude, imaginary part"},
    {" datasetray2sigmare = ", &CDataset::datasetray2sigmare, "second ray, sigma amplitude, real part"},
    {" datasetray2sigmaim = ", &CDataset::datasetray2sigmaim, "second ray, sigma amplitude, imaginary part"},
    {" datasetray2pire = ", &CDataset::datasetray2pire, "second ray, pi amplitude, real part"},
    {" datasetray2piim = ", &CDataset::datasetray2piim, "second ray, pi amplitude, imaginary part"},
    {" datasetactive = ", &CDataset::datasetactive, "not 0: takes part in a fit over all measurements"},
    {" datasetcomment = ", &CDataset::datasetcomment, "comment"},
    {" datasetfile = ", &CDataset::datasetfile, "file from which the measurement came"},
};

/// Written for each point, all but the first only when the curve was measured.
inline constexpr ArrayKey<CDataset> kPointKeys[] = {
    {"  dataset_qz = ", &CDataset::dataset_qz, "qz, Å⁻¹"},
    {"  dataset_R0 = ", &CDataset::dataset_R0, "reflectivity"},
    {"  dataset_A = ", &CDataset::dataset_A, "asymmetry (Rp - Rm) / (Rp + Rm)"},
    {"  dataset_Rp = ", &CDataset::dataset_Rp, "reflectivity of the first ray"},
    {"  dataset_Rm = ", &CDataset::dataset_Rm, "reflectivity of the second ray"},
    {"  dataset_eng = ", &CDataset::dataset_eng, "photon energy of each point, eV"},
};

inline constexpr Setting kActiveDataset[] = {
    {"activedatasetindex = ", &CState::activedatasetindex, "# active data set index", 0},
};

}  // namespace tolvik::keys
