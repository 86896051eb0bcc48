// SPDX-License-Identifier: GPL-2.0-or-later
// Algorithm 0: the Parratt recursion with Névot-Croce roughness.
//
// L. G. Parratt, Phys. Rev. 95, 359 (1954); L. Névot and P. Croce, Rev. Phys. Appl. 15, 761 (1980).
// Magnetism enters as a shift of the scalar index to first order in the magnetic constants. Sigma and pi are
// added as intensities: the rays are incoherent, no sigma-pi mixing exists, and transmission is not offered.
#pragma once

#include "engine/number/number.h"
#include "engine/profile/layer.h"
#include "tolvik/array.h"

namespace tolvik::engine {

/// The vectors of one angle, kept from angle to angle so that nothing is allocated in the loop.
template <class T>
struct ParrattVectors {
  CArray<Cplx<T>> kz;      ///< normal wavevector of each entry, Å⁻¹
  CArray<Cplx<T>> rpi;     ///< pi coefficient of each interface; interface j lies above entry j
  CArray<Cplx<T>> rsigma;  ///< sigma coefficient of each interface
};

/// Normal wavevectors kz = k0 sqrt(n² - cos²θ) of all entries, and the index n at this angle into
/// scalarindex. k0: wavevector in vacuum, Å⁻¹. theta: grazing angle in vacuum, radians. sign: +1 or -1 shifts
/// the index by the magnetic constants times ±cos θ (delta rises where beta falls), 0 leaves them out. Fails
/// only when out of memory; NaN and infinity pass through.
template <Number T>
void CalcWavevectors(Profile<T>& profile, CArray<Cplx<T>>& kz, const T& k0, const T& theta, const T& sign);

/// Fresnel coefficients of all interfaces, upper minus lower over their sum, each times its Névot-Croce
/// factor where the interface is rough. Reads scalarindex and layer_sigma; interface j takes that of entry j.
template <Number T>
void CalcFresnelCoefficients(const Profile<T>& profile, const CArray<Cplx<T>>& kz, CArray<Cplx<T>>& rpi,
                             CArray<Cplx<T>>& rsigma);

/// Intensity reflected by the stack, from the substrate upwards. polarisation: eight doubles, ray one and ray
/// two, each sigma and pi, each real and imaginary part. ray: 1, or anything else for the second ray.
/// A profile without an interface gives 0. Never fails; NaN and infinity pass through.
template <Number T>
T CalcParrattIntensity(const Profile<T>& profile, const CArray<Cplx<T>>& kz, const CArray<Cplx<T>>& rpi,
                       const CArray<Cplx<T>>& rsigma, const double* polarisation, int ray);

}  // namespace tolvik::engine
