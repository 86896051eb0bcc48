// SPDX-License-Identifier: GPL-2.0-or-later
// The members of the boundary records by name, in the order of declaration: visit(name, member) for each.
#pragma once

#include "tolvik/state.h"

namespace tolvik::testing {

#define TOLVIK_MEMBER(name) visit(#name, record.name)

template <class Visit>
void ForEachMember(CLayer& record, Visit visit) {
  TOLVIK_MEMBER(layer_z), TOLVIK_MEMBER(layer_d), TOLVIK_MEMBER(layer_delta), TOLVIK_MEMBER(layer_beta);
  TOLVIK_MEMBER(layer_ddelta), TOLVIK_MEMBER(layer_dbeta), TOLVIK_MEMBER(magnetic), TOLVIK_MEMBER(epsilon);
  TOLVIK_MEMBER(layer_sigma), TOLVIK_MEMBER(scalarindex), TOLVIK_MEMBER(layer_db),
      TOLVIK_MEMBER(layer_density);
  TOLVIK_MEMBER(layer_material);
}

template <class Visit>
void ForEachMember(CElementSlice& record, Visit visit) {
  TOLVIK_MEMBER(z), TOLVIK_MEMBER(el_d), TOLVIK_MEMBER(el_sigma), TOLVIK_MEMBER(el_density),
      TOLVIK_MEMBER(name);
}

template <class Visit>
void ForEachMember(CElementLayer& record, Visit visit) {
  TOLVIK_MEMBER(slices), TOLVIK_MEMBER(element), TOLVIK_MEMBER(el_f1), TOLVIK_MEMBER(el_f2),
      TOLVIK_MEMBER(spare);
}

template <class Visit>
void ForEachMember(CGaussFunction& record, Visit visit) {
  TOLVIK_MEMBER(gauss_variance), TOLVIK_MEMBER(gauss_z), TOLVIK_MEMBER(gauss_delta),
      TOLVIK_MEMBER(gauss_beta);
  TOLVIK_MEMBER(gauss_fita), TOLVIK_MEMBER(gauss_fitvar), TOLVIK_MEMBER(gauss_fitz);
  TOLVIK_MEMBER(gauss_acoupling), TOLVIK_MEMBER(gauss_varcoupling), TOLVIK_MEMBER(gauss_bindtolayer);
  TOLVIK_MEMBER(gauss_fit), TOLVIK_MEMBER(gauss_usespline), TOLVIK_MEMBER(gauss_spliney);
  TOLVIK_MEMBER(gauss_splinex);
}

template <class Visit>
void ForEachMember(CFitVariable& record, Visit visit) {
  TOLVIK_MEMBER(fit_value), TOLVIK_MEMBER(fit_delta), TOLVIK_MEMBER(fit_upper_boundary);
  TOLVIK_MEMBER(fit_lower_boundary), TOLVIK_MEMBER(fit_id), TOLVIK_MEMBER(fit_additional_id);
  TOLVIK_MEMBER(fit_element_id), TOLVIK_MEMBER(fit_dataset1), TOLVIK_MEMBER(fit_dataset2);
  TOLVIK_MEMBER(fit_sigma);
}

template <class Visit>
void ForEachMember(CDataset& record, Visit visit) {
  TOLVIK_MEMBER(datasetenergy), TOLVIK_MEMBER(datasetresolution), TOLVIK_MEMBER(datasetmultiplicator);
  TOLVIK_MEMBER(datasettranslator), TOLVIK_MEMBER(datasetqztranslation);
  TOLVIK_MEMBER(datasetray1sigmare), TOLVIK_MEMBER(datasetray1sigmaim), TOLVIK_MEMBER(datasetray1pire);
  TOLVIK_MEMBER(datasetray1piim), TOLVIK_MEMBER(datasetray2sigmare), TOLVIK_MEMBER(datasetray2sigmaim);
  TOLVIK_MEMBER(datasetray2pire), TOLVIK_MEMBER(datasetray2piim);
  TOLVIK_MEMBER(dataset_qz), TOLVIK_MEMBER(dataset_A), TOLVIK_MEMBER(dataset_R0), TOLVIK_MEMBER(dataset_Rp);
  TOLVIK_MEMBER(dataset_Rm), TOLVIK_MEMBER(dataset_eng);
  TOLVIK_MEMBER(datasettitle), TOLVIK_MEMBER(datasetcomment), TOLVIK_MEMBER(datasetfile);
  TOLVIK_MEMBER(datasetactive);
}

template <class Visit>
void ForEachMember(CMapRange& record, Visit visit) {
  TOLVIK_MEMBER(id1), TOLVIK_MEMBER(id2), TOLVIK_MEMBER(min1), TOLVIK_MEMBER(max1), TOLVIK_MEMBER(min2);
  TOLVIK_MEMBER(max2), TOLVIK_MEMBER(n1), TOLVIK_MEMBER(n2), TOLVIK_MEMBER(keeplambda);
}

template <class Visit>
void ForEachMember(CColumnRow& record, Visit visit) {
  TOLVIK_MEMBER(energy), TOLVIK_MEMBER(values);
}

template <class Visit>
void ForEachMember(CColumnTable& record, Visit visit) {
  TOLVIK_MEMBER(count), TOLVIK_MEMBER(capacity), TOLVIK_MEMBER(rows), TOLVIK_MEMBER(columns);
  TOLVIK_MEMBER(cursor);
}

template <class Visit>
void ForEachMember(COpticalTable& record, Visit visit) {
  TOLVIK_MEMBER(name), TOLVIK_MEMBER(db), TOLVIK_MEMBER(m), TOLVIK_MEMBER(e), TOLVIK_MEMBER(ff);
  TOLVIK_MEMBER(spare), TOLVIK_MEMBER(kind);
}

template <class Visit>
void ForEachMember(CState& record, Visit visit) {
  TOLVIK_MEMBER(layers), TOLVIK_MEMBER(mode), TOLVIK_MEMBER(elementlayers), TOLVIK_MEMBER(currentelement);
  TOLVIK_MEMBER(lambda), TOLVIK_MEMBER(resolution), TOLVIK_MEMBER(fitqzmin), TOLVIK_MEMBER(fitqzmax);
  TOLVIK_MEMBER(fittemp), TOLVIK_MEMBER(fitdtemp), TOLVIK_MEMBER(qzmax), TOLVIK_MEMBER(numberofpoints);
  TOLVIK_MEMBER(averaging), TOLVIK_MEMBER(engscanqz), TOLVIK_MEMBER(engscanmin), TOLVIK_MEMBER(engscanmax);
  TOLVIK_MEMBER(minlayerthickness), TOLVIK_MEMBER(maxlayerthickness), TOLVIK_MEMBER(gradientscale);
  TOLVIK_MEMBER(segmentationmodel), TOLVIK_MEMBER(layersegmentationmode), TOLVIK_MEMBER(fitasymmetry);
  TOLVIK_MEMBER(fiterrorfunction), TOLVIK_MEMBER(fitpenalty), TOLVIK_MEMBER(precision);
  TOLVIK_MEMBER(fitresolution), TOLVIK_MEMBER(fitmeasmult), TOLVIK_MEMBER(fitdeltaqz);
  TOLVIK_MEMBER(gausscoupling), TOLVIK_MEMBER(usemeasurementqz), TOLVIK_MEMBER(fastresolution);
  TOLVIK_MEMBER(showangle), TOLVIK_MEMBER(fitalgorithm), TOLVIK_MEMBER(algorithm), TOLVIK_MEMBER(scattering);
  TOLVIK_MEMBER(unused), TOLVIK_MEMBER(magnetizationmode), TOLVIK_MEMBER(maggamma), TOLVIK_MEMBER(magphi);
  TOLVIK_MEMBER(ray1sigmare), TOLVIK_MEMBER(ray1sigmaim), TOLVIK_MEMBER(ray1pire), TOLVIK_MEMBER(ray1piim);
  TOLVIK_MEMBER(ray2sigmare), TOLVIK_MEMBER(ray2sigmaim), TOLVIK_MEMBER(ray2pire), TOLVIK_MEMBER(ray2piim);
  TOLVIK_MEMBER(activedatasetindex), TOLVIK_MEMBER(pendinggauss), TOLVIK_MEMBER(evo_population);
  TOLVIK_MEMBER(evo_elite), TOLVIK_MEMBER(evo_parents), TOLVIK_MEMBER(evo_range), TOLVIK_MEMBER(evo_mixing);
  TOLVIK_MEMBER(evo_random), TOLVIK_MEMBER(evo_probability), TOLVIK_MEMBER(evo_takeeliteasparents);
  TOLVIK_MEMBER(evo_evorestrictfitparameters), TOLVIK_MEMBER(epsilon), TOLVIK_MEMBER(maprange);
  TOLVIK_MEMBER(fitvariables), TOLVIK_MEMBER(datasets), TOLVIK_MEMBER(gaussfunctions);
  TOLVIK_MEMBER(ocautomatic), TOLVIK_MEMBER(opticaltables), TOLVIK_MEMBER(mulqz4),
      TOLVIK_MEMBER(polcorrection);
  TOLVIK_MEMBER(kktableindex), TOLVIK_MEMBER(kkoffset), TOLVIK_MEMBER(kktable), TOLVIK_MEMBER(disablescript);
  TOLVIK_MEMBER(scriptparameters), TOLVIK_MEMBER(scriptlines), TOLVIK_MEMBER(defaultscriptlines);
}

#undef TOLVIK_MEMBER

}  // namespace tolvik::testing
