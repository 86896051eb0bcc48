// SPDX-License-Identifier: GPL-2.0-or-later
// The layout of the records on x86-64: the contract with a front end that passes them by pointer. The offsets
// are counted from the types of the members in their order: 4 bytes for an int32, 8 for a double or a
// pointer, 1 for a bool, 16 for an array or a text, each at a multiple of its alignment.
#include "tolvik/state.h"

#include <cstddef>
#include <type_traits>

namespace tolvik {
namespace {

#if defined(__x86_64__)

#define EXPECT_AT(record, member, offset) static_assert(offsetof(record, member) == offset)
#define EXPECT_SIZE(record, bytes) \
  static_assert(sizeof(record) == bytes && alignof(record) == 8 && std::is_standard_layout_v<record>)

using Numbers = CArray<double>;

EXPECT_AT(Numbers, size, 0);
EXPECT_AT(Numbers, capacity, 4);
EXPECT_AT(Numbers, data, 8);
EXPECT_SIZE(Numbers, 16);
EXPECT_SIZE(CCharArray, 16);

EXPECT_AT(CLayer, layer_z, 0);
EXPECT_AT(CLayer, layer_d, 8);
EXPECT_AT(CLayer, layer_delta, 16);
EXPECT_AT(CLayer, layer_beta, 24);
EXPECT_AT(CLayer, layer_ddelta, 32);
EXPECT_AT(CLayer, layer_dbeta, 40);
EXPECT_AT(CLayer, magnetic, 48);
EXPECT_AT(CLayer, epsilon, 56);
EXPECT_AT(CLayer, layer_sigma, 312);
EXPECT_AT(CLayer, scalarindex, 320);
EXPECT_AT(CLayer, layer_db, 336);
EXPECT_AT(CLayer, layer_density, 352);
EXPECT_AT(CLayer, layer_material, 360);
EXPECT_SIZE(CLayer, 376);

EXPECT_AT(CElementSlice, z, 0);
EXPECT_AT(CElementSlice, el_d, 8);
EXPECT_AT(CElementSlice, el_sigma, 16);
EXPECT_AT(CElementSlice, el_density, 24);
EXPECT_AT(CElementSlice, name, 32);
EXPECT_SIZE(CElementSlice, 48);

EXPECT_AT(CElementLayer, slices, 0);
EXPECT_AT(CElementLayer, element, 16);
EXPECT_AT(CElementLayer, el_f1, 32);
EXPECT_AT(CElementLayer, el_f2, 40);
EXPECT_AT(CElementLayer, spare, 48);
EXPECT_SIZE(CElementLayer, 80);

EXPECT_AT(CGaussFunction, gauss_variance, 0);
EXPECT_AT(CGaussFunction, gauss_z, 8);
EXPECT_AT(CGaussFunction, gauss_delta, 16);
EXPECT_AT(CGaussFunction, gauss_beta, 24);
EXPECT_AT(CGaussFunction, gauss_fita, 32);
EXPECT_AT(CGaussFunction, gauss_fitvar, 33);
EXPECT_AT(CGaussFunction, gauss_fitz, 34);
EXPECT_AT(CGaussFunction, gauss_acoupling, 36);
EXPECT_AT(CGaussFunction, gauss_varcoupling, 40);
EXPECT_AT(CGaussFunction, gauss_bindtolayer, 44);
EXPECT_AT(CGaussFunction, gauss_fit, 48);
EXPECT_AT(CGaussFunction, gauss_usespline, 49);
EXPECT_AT(CGaussFunction, gauss_spliney, 56);
EXPECT_AT(CGaussFunction, gauss_splinex, 72);
EXPECT_SIZE(CGaussFunction, 88);

EXPECT_AT(CFitVariable, fit_value, 0);
EXPECT_AT(CFitVariable, fit_delta, 8);
EXPECT_AT(CFitVariable, fit_upper_boundary, 16);
EXPECT_AT(CFitVariable, fit_lower_boundary, 24);
EXPECT_AT(CFitVariable, fit_id, 32);
EXPECT_AT(CFitVariable, fit_additional_id, 36);
EXPECT_AT(CFitVariable, fit_element_id, 40);
EXPECT_AT(CFitVariable, fit_dataset1, 44);
EXPECT_AT(CFitVariable, fit_dataset2, 48);
EXPECT_AT(CFitVariable, fit_sigma, 56);
EXPECT_SIZE(CFitVariable, 64);

EXPECT_AT(CDataset, datasetenergy, 0);
EXPECT_AT(CDataset, datasetresolution, 8);
EXPECT_AT(CDataset, datasetmultiplicator, 16);
EXPECT_AT(CDataset, datasettranslator, 24);
EXPECT_AT(CDataset, datasetqztranslation, 32);
EXPECT_AT(CDataset, datasetray1sigmare, 40);
EXPECT_AT(CDataset, datasetray1sigmaim, 48);
EXPECT_AT(CDataset, datasetray1pire, 56);
EXPECT_AT(CDataset, datasetray1piim, 64);
EXPECT_AT(CDataset, datasetray2sigmare, 72);
EXPECT_AT(CDataset, datasetray2sigmaim, 80);
EXPECT_AT(CDataset, datasetray2pire, 88);
EXPECT_AT(CDataset, datasetray2piim, 96);
EXPECT_AT(CDataset, dataset_qz, 104);
EXPECT_AT(CDataset, dataset_A, 120);
EXPECT_AT(CDataset, dataset_R0, 136);
EXPECT_AT(CDataset, dataset_Rp, 152);
EXPECT_AT(CDataset, dataset_Rm, 168);
EXPECT_AT(CDataset, dataset_eng, 184);
EXPECT_AT(CDataset, datasettitle, 200);
EXPECT_AT(CDataset, datasetcomment, 216);
EXPECT_AT(CDataset, datasetfile, 232);
EXPECT_AT(CDataset, datasetactive, 248);
EXPECT_SIZE(CDataset, 256);

EXPECT_AT(CMapRange, id1, 0);
EXPECT_AT(CMapRange, id2, 4);
EXPECT_AT(CMapRange, min1, 8);
EXPECT_AT(CMapRange, max1, 16);
EXPECT_AT(CMapRange, min2, 24);
EXPECT_AT(CMapRange, max2, 32);
EXPECT_AT(CMapRange, n1, 40);
EXPECT_AT(CMapRange, n2, 44);
EXPECT_AT(CMapRange, keeplambda, 48);
EXPECT_SIZE(CMapRange, 56);

EXPECT_AT(CColumnRow, energy, 0);
EXPECT_AT(CColumnRow, values, 8);
EXPECT_SIZE(CColumnRow, 24);

EXPECT_AT(CColumnTable, count, 0);
EXPECT_AT(CColumnTable, capacity, 4);
EXPECT_AT(CColumnTable, rows, 8);
EXPECT_AT(CColumnTable, columns, 16);
EXPECT_AT(CColumnTable, cursor, 20);
EXPECT_SIZE(CColumnTable, 24);

EXPECT_AT(COpticalTable, name, 0);
EXPECT_AT(COpticalTable, db, 16);
EXPECT_AT(COpticalTable, m, 40);
EXPECT_AT(COpticalTable, e, 64);
EXPECT_AT(COpticalTable, ff, 88);
EXPECT_AT(COpticalTable, spare, 112);
EXPECT_AT(COpticalTable, kind, 144);
EXPECT_SIZE(COpticalTable, 152);

EXPECT_AT(CState, layers, 0);
EXPECT_AT(CState, mode, 16);
EXPECT_AT(CState, elementlayers, 24);
EXPECT_AT(CState, currentelement, 40);
EXPECT_AT(CState, lambda, 48);
EXPECT_AT(CState, resolution, 56);
EXPECT_AT(CState, fitqzmin, 64);
EXPECT_AT(CState, fitqzmax, 72);
EXPECT_AT(CState, fittemp, 80);
EXPECT_AT(CState, fitdtemp, 88);
EXPECT_AT(CState, qzmax, 96);
EXPECT_AT(CState, numberofpoints, 104);
EXPECT_AT(CState, averaging, 108);
EXPECT_AT(CState, engscanqz, 112);
EXPECT_AT(CState, engscanmin, 120);
EXPECT_AT(CState, engscanmax, 128);
EXPECT_AT(CState, minlayerthickness, 136);
EXPECT_AT(CState, maxlayerthickness, 144);
EXPECT_AT(CState, gradientscale, 152);
EXPECT_AT(CState, segmentationmodel, 160);
EXPECT_AT(CState, layersegmentationmode, 164);
EXPECT_AT(CState, fitasymmetry, 168);
EXPECT_AT(CState, fiterrorfunction, 172);
EXPECT_AT(CState, fitpenalty, 176);
EXPECT_AT(CState, precision, 184);
EXPECT_AT(CState, fitresolution, 188);
EXPECT_AT(CState, fitmeasmult, 189);
EXPECT_AT(CState, fitdeltaqz, 190);
EXPECT_AT(CState, gausscoupling, 191);
EXPECT_AT(CState, usemeasurementqz, 192);
EXPECT_AT(CState, fastresolution, 193);
EXPECT_AT(CState, showangle, 196);
EXPECT_AT(CState, fitalgorithm, 200);
EXPECT_AT(CState, algorithm, 204);
EXPECT_AT(CState, scattering, 208);
EXPECT_AT(CState, unused, 212);
EXPECT_AT(CState, magnetizationmode, 216);
EXPECT_AT(CState, maggamma, 224);
EXPECT_AT(CState, magphi, 232);
EXPECT_AT(CState, ray1sigmare, 240);
EXPECT_AT(CState, ray1sigmaim, 248);
EXPECT_AT(CState, ray1pire, 256);
EXPECT_AT(CState, ray1piim, 264);
EXPECT_AT(CState, ray2sigmare, 272);
EXPECT_AT(CState, ray2sigmaim, 280);
EXPECT_AT(CState, ray2pire, 288);
EXPECT_AT(CState, ray2piim, 296);
EXPECT_AT(CState, activedatasetindex, 304);
EXPECT_AT(CState, pendinggauss, 308);
EXPECT_AT(CState, evo_population, 312);
EXPECT_AT(CState, evo_elite, 320);
EXPECT_AT(CState, evo_parents, 328);
EXPECT_AT(CState, evo_range, 336);
EXPECT_AT(CState, evo_mixing, 344);
EXPECT_AT(CState, evo_random, 352);
EXPECT_AT(CState, evo_probability, 360);
EXPECT_AT(CState, evo_takeeliteasparents, 368);
EXPECT_AT(CState, evo_evorestrictfitparameters, 369);
EXPECT_AT(CState, epsilon, 376);
EXPECT_AT(CState, maprange, 384);
EXPECT_AT(CState, fitvariables, 440);
EXPECT_AT(CState, datasets, 456);
EXPECT_AT(CState, gaussfunctions, 472);
EXPECT_AT(CState, ocautomatic, 488);
EXPECT_AT(CState, opticaltables, 496);
EXPECT_AT(CState, mulqz4, 512);
EXPECT_AT(CState, polcorrection, 516);
EXPECT_AT(CState, kktableindex, 520);
EXPECT_AT(CState, kkoffset, 528);
EXPECT_AT(CState, kktable, 536);
EXPECT_AT(CState, disablescript, 560);
EXPECT_AT(CState, scriptparameters, 568);
EXPECT_AT(CState, scriptlines, 584);
EXPECT_AT(CState, defaultscriptlines, 600);
EXPECT_SIZE(CState, 616);

static_assert(std::is_same_v<CSolution, CDataset>, "curves and measurements pass through the same routines");

#undef EXPECT_AT
#undef EXPECT_SIZE

#endif

}  // namespace
}  // namespace tolvik
