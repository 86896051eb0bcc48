// SPDX-License-Identifier: GPL-2.0-or-later
// All members of the records, in their order, for an archive that reads or writes them: archive(member...).
//
// The sizes below catch a member that was added to a record and not here.
#pragma once

#include <type_traits>

#include "tolvik/state.h"

namespace tolvik::python {

/// Record or const Record.
template <class Given, class Record>
concept Is = std::is_same_v<std::remove_const_t<Given>, Record>;

template <class Archive>
void VisitMembers(Archive& archive, Is<CLayer> auto& r) {
  archive(r.layer_z, r.layer_d, r.layer_delta, r.layer_beta, r.layer_ddelta, r.layer_dbeta, r.magnetic,
          r.epsilon, r.layer_sigma, r.scalarindex, r.layer_db, r.layer_density, r.layer_material);
}

template <class Archive>
void VisitMembers(Archive& archive, Is<CElementSlice> auto& r) {
  archive(r.z, r.el_d, r.el_sigma, r.el_density, r.name);
}

template <class Archive>
void VisitMembers(Archive& archive, Is<CElementLayer> auto& r) {
  archive(r.slices, r.element, r.el_f1, r.el_f2, r.spare);
}

template <class Archive>
void VisitMembers(Archive& archive, Is<CGaussFunction> auto& r) {
  archive(r.gauss_variance, r.gauss_z, r.gauss_delta, r.gauss_beta, r.gauss_fita, r.gauss_fitvar,
          r.gauss_fitz, r.gauss_acoupling, r.gauss_varcoupling, r.gauss_bindtolayer, r.gauss_fit,
          r.gauss_usespline, r.gauss_spliney, r.gauss_splinex);
}

template <class Archive>
void VisitMembers(Archive& archive, Is<CFitVariable> auto& r) {
  archive(r.fit_value, r.fit_delta, r.fit_upper_boundary, r.fit_lower_boundary, r.fit_id, r.fit_additional_id,
          r.fit_element_id, r.fit_dataset1, r.fit_dataset2, r.fit_sigma);
}

template <class Archive>
void VisitMembers(Archive& archive, Is<CDataset> auto& r) {
  archive(r.datasetenergy, r.datasetresolution, r.datasetmultiplicator, r.datasettranslator,
          r.datasetqztranslation);
  archive(r.datasetray1sigmare, r.datasetray1sigmaim, r.datasetray1pire, r.datasetray1piim,
          r.datasetray2sigmare, r.datasetray2sigmaim, r.datasetray2pire, r.datasetray2piim);
  archive(r.dataset_qz, r.dataset_A, r.dataset_R0, r.dataset_Rp, r.dataset_Rm, r.dataset_eng, r.datasettitle,
          r.datasetcomment, r.datasetfile, r.datasetactive);
}

template <class Archive>
void VisitMembers(Archive& archive, Is<COpticalTable> auto& r) {
  archive(r.name, r.db, r.m, r.e, r.ff, r.spare, r.kind);
}

template <class Archive>
void VisitMembers(Archive& archive, Is<CMapRange> auto& r) {
  archive(r.id1, r.id2, r.min1, r.max1, r.min2, r.max2, r.n1, r.n2, r.keeplambda);
}

template <class Archive>
void VisitMembers(Archive& archive, Is<CState> auto& r) {
  archive(r.layers, r.mode, r.elementlayers, r.currentelement, r.lambda, r.resolution, r.fitqzmin, r.fitqzmax,
          r.fittemp, r.fitdtemp, r.qzmax, r.numberofpoints, r.averaging, r.engscanqz, r.engscanmin,
          r.engscanmax, r.minlayerthickness, r.maxlayerthickness, r.gradientscale, r.segmentationmodel,
          r.layersegmentationmode);
  archive(r.fitasymmetry, r.fiterrorfunction, r.fitpenalty, r.precision, r.fitresolution, r.fitmeasmult,
          r.fitdeltaqz, r.gausscoupling, r.usemeasurementqz, r.fastresolution, r.showangle, r.fitalgorithm,
          r.algorithm, r.scattering, r.unused, r.magnetizationmode, r.maggamma, r.magphi);
  archive(r.ray1sigmare, r.ray1sigmaim, r.ray1pire, r.ray1piim, r.ray2sigmare, r.ray2sigmaim, r.ray2pire,
          r.ray2piim);
  archive(r.activedatasetindex, r.pendinggauss, r.evo_population, r.evo_elite, r.evo_parents, r.evo_range,
          r.evo_mixing, r.evo_random, r.evo_probability, r.evo_takeeliteasparents,
          r.evo_evorestrictfitparameters, r.epsilon, r.maprange, r.fitvariables, r.datasets,
          r.gaussfunctions);
  archive(r.ocautomatic, r.opticaltables, r.mulqz4, r.polcorrection, r.kktableindex, r.kkoffset, r.kktable,
          r.disablescript, r.scriptparameters, r.scriptlines, r.defaultscriptlines);
}

#if defined(__x86_64__)
static_assert(sizeof(CLayer) == 376 && sizeof(CElementSlice) == 48 && sizeof(CElementLayer) == 80);
static_assert(sizeof(CGaussFunction) == 88 && sizeof(CFitVariable) == 64 && sizeof(CDataset) == 256);
static_assert(sizeof(CMapRange) == 56 && sizeof(CColumnTable) == 24 && sizeof(COpticalTable) == 152);
static_assert(sizeof(CState) == 616);
#endif

}  // namespace tolvik::python
