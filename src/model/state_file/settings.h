// SPDX-License-Identifier: GPL-2.0-or-later
// The single settings of the state file, in the order of the file.
#pragma once

#include "model/state_file/keys.h"

namespace tolvik::keys {

/// Settings above the energy line.
inline constexpr Setting kSettingsAboveEnergy[] = {
    {"mode = ", &CState::mode, "# mode (material or element)"},
    {"precision = ", &CState::precision, "# numerical precision"},
    {"disablescript = ", &CState::disablescript, "# disable script"},
};

inline constexpr std::string_view kEnergyComment = "# energy (saved for compatibility)";

/// Settings below the energy line.
inline constexpr Setting kSettingsBelowEnergy[] = {
    {"resolution = ", &CState::resolution, "# resolution"},
    {"qzmax = ", &CState::qzmax, "# max qz to show"},
    {"numberofpoints = ", &CState::numberofpoints, "# number of points to show"},
    {"averaging = ", &CState::averaging, "# averaging value"},
    {"fittemp = ", &CState::fittemp, "# temperature for fitting"},
    {"fitdtemp = ", &CState::fitdtemp, "# delta temperature for fitting"},
    {"fitqzmin = ", &CState::fitqzmin, "# minimum qz for fitting"},
    {"fitqzmax = ", &CState::fitqzmax, "# maximum qz for fitting"},
    {"fastresolution = ", &CState::fastresolution, "# fast calculation of resolution"},
    {"usemeasurementqz = ", &CState::usemeasurementqz, "# use measurement data for determine qz"},
    {"showangle = ", &CState::showangle, "# show qz(false) or angle (true)"},
    {"fitalgorithm = ", &CState::fitalgorithm, "# fit algorithm"},
    {"fiterrorfunction = ", &CState::fiterrorfunction, "# fit error function"},
    {"fitresolution = ", &CState::fitresolution, "# fit resolution"},
    {"fitasymmetry = ", &CState::fitasymmetry, "# fit asymmetry (with magnetic field)"},
    {"gausscoupling = ", &CState::gausscoupling, "# gausscoupling algorithm"},
    {"layersegmentationmode = ", &CState::layersegmentationmode,
     "# multi slicing mode (0=roughness approx. ...)"},
    {"algorithm = ", &CState::algorithm, "# algorithm (0=Parratt. ...)"},
    {"scattering = ", &CState::scattering, "# scattering type (0=reflection, 1=transmission)"},
    {"fitmeasmult = ", &CState::fitmeasmult, "# fit measurement multiplicator"},
    {"fitdeltaqz = ", &CState::fitdeltaqz, "# fit delta qz"},
    {"engscanqz = ", &CState::engscanqz, "# energy scan qz"},
    {"engscanmin = ", &CState::engscanmin, "# energy scan min"},
    {"engscanmax = ", &CState::engscanmax, "# energy scan max"},
    {"ray1sigmare = ", &CState::ray1sigmare, "# polarization of sigma part and pi part in complex numbers",
     0},
    {"ray1sigmaim = ", &CState::ray1sigmaim, "", 0},
    {"ray1pire = ", &CState::ray1pire, "", 0},
    {"ray1piim = ", &CState::ray1piim, "", 0},
    {"ray2sigmare = ", &CState::ray2sigmare, "", 0},
    {"ray2sigmaim = ", &CState::ray2sigmaim, "", 0},
    {"ray2pire = ", &CState::ray2pire, "", 0},
    {"ray2piim = ", &CState::ray2piim, ""},
    {"minlayerthickness = ", &CState::minlayerthickness, "# minimal layer thickness"},
    {"maxlayerthickness = ", &CState::maxlayerthickness, "# maximal layer thickness"},
    {"gradientscale = ", &CState::gradientscale, "# gradient scale"},
    {"segmentationmodel = ", &CState::segmentationmodel, "# segmentation model"},
    {"magnetizationmode = ", &CState::magnetizationmode, "# use magnetization"},
    {"maggamma = ", &CState::maggamma, "# magnetization direction"},
    {"magphi = ", &CState::magphi, ""},
    {"evo_random = ", &CState::evo_random, "# random number seed"},
    {"evo_population = ", &CState::evo_population, "# population"},
    {"evo_elite = ", &CState::evo_elite, "# percent elite of population"},
    {"evo_parents = ", &CState::evo_parents, "# percent of parents"},
    {"evo_range = ", &CState::evo_range, "# mutation range in real numbers in percent"},
    {"evo_mixing = ", &CState::evo_mixing, "# probability of mixing"},
    {"evo_probability = ", &CState::evo_probability, "# probability of mutation"},
    {"evo_takeeliteasparents = ", &CState::evo_takeeliteasparents, "# take elite as parents"},
    {"evo_evorestrictfitparameters = ", &CState::evo_evorestrictfitparameters, "# restrict fit parameters"},
    {"ocautomatic = ", &CState::ocautomatic, "# optical constant handling"},
};

}  // namespace tolvik::keys
