// SPDX-License-Identifier: GPL-2.0-or-later
// Limits of the lanes, each with its reason. Fallback: beyond a limit the plain path calculates.
//
// A "derived" limit follows from the ranges of the number types; a "measured" one gives the measurement.
#pragma once

namespace tolvik::engine::lanes {

/// Of an index or its square, and of its imaginary part. A choice: matter for X-rays is well inside, and the
/// random stacks of tests/precision exceed it on purpose (OddStacksGiveNumbersWherePlainDoes).
template <class T>
inline constexpr T kSmallestRefraction = T(0.5);
template <class T>
inline constexpr T kLargestRefraction = T(1.5);
template <class T>
inline constexpr T kLargestAbsorption = T(0.5);

/// Of ddelta and dbeta. A choice as above: n stays above 0.4 in both senses.
template <class T>
inline constexpr T kLargestShift = T(0.1);

/// Of k0, Å⁻¹. A choice: wavelengths from 6e-5 to 6e5 Å.
template <class T>
inline constexpr T kSmallestWavenumber = T(1e-5);
template <class T>
inline constexpr T kLargestWavenumber = T(1e5);

/// Of 2 σ² k0². Derived: times |w²| below 4 it still fits a float.
template <class T>
inline constexpr T kLargestRoughness = T(1e20);

/// Of 2 k0 d. Derived: half the limit of SinCos, as |w| stays below 2.
template <class T>
inline constexpr T kMaxPhase = sizeof(T) == 8 ? T(5e5) : T(5e3);

/// Of sin θ in the recursion. Derived: |w²|² of vacuum is s⁴, which must not underflow.
template <class T>
inline constexpr T kSmallestSine = sizeof(T) == 8 ? T(1e-75) : T(1e-9);

/// Of sin θ in the matrix algorithms. They count angles below 1e-4 rad as 1e-4; 0.1 percent is left for
/// rounding.
template <class T>
inline constexpr T kSmallestSineOfMatrix = T(1.001e-4);

/// Of |w²|², with w the normal wavevector in units of k0: below, the plain form n² - cos²θ is rounding error,
/// and the plain path defines the result. Measured on 2e6 random angles and indices: that form is off by up
/// to 1.6 (float) and 3.9 (double) times the epsilon of the type; |w²| may fall to 2 and 45 epsilon here.
template <class T>
inline constexpr T kSmallestModulus2 = sizeof(T) == 8 ? T(1e-28) : T(6e-14);

/// Of |kappa|² in the matrix algorithms: the same bound on |w²|, for the same reason.
inline constexpr double kSmallestKappa2 = 1e-14;

/// Im n² above which |kappa²| cannot come near kSmallestKappa2 at any angle; ten times that.
inline constexpr double kGuardingAbsorption = 1e-13;

/// Of the exponent of a roughness factor at one interface. Derived: e^80 = 6e34 and e^10 = 2e4 leave room for
/// the products of numerator and denominator until they are scaled.
template <class T>
inline constexpr T kLargestExponent = sizeof(T) == 8 ? T(80) : T(10);

/// Of the logarithm by which waves, and likewise roughness factors, grow over a whole stack of the matrix
/// algorithms. Derived: the squares of amplitudes that grow by twice this, times a roughness factor that
/// grows by once this, fit the type: e^500 = 1e217, e^50 = 5e21. Beyond, the plain path may overflow, and
/// defines the result (OverflowOfTheGrowingWavesStays).
template <class T>
inline constexpr T kLargestGrowth = sizeof(T) == 8 ? T(100) : T(10);

/// Of |n² - 1| where "near vacuum" is assumed: both waves of a scalar interface are then in one quarter of
/// the plane or nearly so, and no coefficient is infinite. A choice: hard and soft X-rays down to about 50
/// eV.
template <class T>
inline constexpr T kLargestContrast = T(0.2);

/// Of the square root of a product of off-diagonal elements that couples two waves. Derived: the product,
/// 1e-16, is compared with elements near 1, whose rounding is 1.1e-16.
inline constexpr double kSmallestTurn = 1e-8;

/// Of |M11 M22 - M12 M21|² relative to |M11 M22|². Derived: ten of sixteen digits cancel, and six are left.
/// In a thick magnetic absorber the wave that grows most hides the other of its pair.
inline constexpr double kSmallestDelta2 = 1e-20;

/// Of the phase of a roughness factor that uses the short sine. Its polynomials are made for it
/// (FunctionConstants::short_phase). With the mean m and half the difference h of n² - 1 on both sides the
/// product of the w is s² + m - r with |r| <= |h|, since (s² + m)² - h² is its square.
inline constexpr double kShortRoughnessPhase = 0.125;

/// Interfaces after which numerator and denominator are scaled. Derived: at most 128 times larger or
/// |w|² 4 times smaller at each, they stay within 1e-214 .. 1e34 (double, |w| >= 1e-7) and within
/// 1e-24 .. 3e8 (float, |w| >= 5e-4). After half as many their squares are within the type as well.
template <class T>
inline constexpr int kRescaleEvery = sizeof(T) == 8 ? 16 : 4;

/// The number of entries from which equal ones are searched; in a shorter stack there is little to share.
inline constexpr int kFewestShared = 6;

}  // namespace tolvik::engine::lanes
