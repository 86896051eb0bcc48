// SPDX-License-Identifier: GPL-2.0-or-later
// Records of the sample: layers, element profiles and the magnetic depth profile. Lengths in Å.
//
// The order and the types of all members are the contract with a front end; model/record_layout.cpp pins
// them.
#pragma once

#include <complex>
#include <cstdint>

#include "tolvik/array.h"

namespace tolvik {

/// One slab of the stack in material mode, with index n = 1 - layer_delta + i layer_beta.
struct CLayer {
  double layer_z = 0;                         ///< height of the upper interface, Å; z runs upwards
  double layer_d = 0;                         ///< thickness, Å
  double layer_delta = 0;                     ///< real decrement of the index
  double layer_beta = 0;                      ///< absorption, imaginary part of the index
  double layer_ddelta = 0;                    ///< magnetic part of delta
  double layer_dbeta = 0;                     ///< magnetic part of beta
  std::int32_t magnetic = 0;                  ///< derived: 1 when epsilon carries magnetic terms
  std::complex<double> epsilon[16] = {};      ///< derived tensor, row major 4×4, upper left 3×3 in use
  double layer_sigma = 0;                     ///< roughness of the interface above, Å
  std::complex<double> scalarindex = {1, 0};  ///< derived: index at the present angle
  CCharArray layer_db = "vacuum";             ///< stem of the optical tables, or a material name
  double layer_density = 0;                   ///< kept for the front end, not used
  CCharArray layer_material;                  ///< kept for the front end, not used

  /// Tensor element by row and column, 0 = x (sigma field), 1 = y (along the beam), 2 = z.
  std::complex<double>& Epsilon(int row, int column) { return epsilon[4 * row + column]; }
  const std::complex<double>& Epsilon(int row, int column) const { return epsilon[4 * row + column]; }
};

/// One slice of the depth distribution of one chemical element.
struct CElementSlice {
  double z = 0;           ///< derived height of the interface above, Å
  double el_d = 0;        ///< thickness, Å
  double el_sigma = 0;    ///< roughness, Å
  double el_density = 0;  ///< density of the element in this slice
  CCharArray name;        ///< stays empty
};

/// One chemical element of the sample in element mode.
struct CElementLayer {
  CArray<CElementSlice> slices;
  CCharArray element;    ///< stem of the .ff table
  double el_f1 = 0;      ///< real scattering factor at the present energy
  double el_f2 = 0;      ///< imaginary scattering factor
  double spare[4] = {};  ///< copied from the material at a look-up
};

/// One function of the magnetic depth profile: a gaussian or a spline over z.
struct CGaussFunction {
  double gauss_variance = 1.0;  ///< width, Å; used as a standard deviation
  double gauss_z = 0;           ///< centre, Å
  double gauss_delta = 0;       ///< amplitude in delta
  double gauss_beta = 0;        ///< amplitude in beta
  bool gauss_fita = false;
  bool gauss_fitvar = false;
  bool gauss_fitz = false;
  std::int32_t gauss_acoupling = -1;
  std::int32_t gauss_varcoupling = -1;
  std::int32_t gauss_bindtolayer = -1;  ///< counted from the ambient (0); -1 acts on all depths
  bool gauss_fit = false;
  bool gauss_usespline = false;
  CArray<double> gauss_spliney;
  CArray<double> gauss_splinex;
};

}  // namespace tolvik
