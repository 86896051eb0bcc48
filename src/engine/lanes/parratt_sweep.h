// SPDX-License-Identifier: GPL-2.0-or-later
// What the kernels for intensities with derivatives get and give: plain numbers and pointers.
//
// A register holds one node each of as many points as it has places; the registers of a strip hold all nodes
// of these points. Sums over the nodes of a point are then sums over registers.
#pragma once

#include <cstdint>

#include "engine/lanes/parratt_stack.h"

namespace tolvik::engine::lanes {

/// The rows of an entry: sums over the nodes of a point, weight times a part of the derivative of R. With
/// g = dR/d(n²), where R depends on Re(g n² ...) alone (docs/derivations/adjoint.md), h = g n:
enum SweepRow : int {
  kIndexReal,     ///< Re h: dR/d delta = -2 of it
  kIndexImag,     ///< Im h: dR/d beta = -2 of it
  kPhase,         ///< dR/dd = -k0 of it; of slabs
  kRoughness,     ///< dR/d(sigma²) = -k0²/2 of it; of the interface above the entry
  kMagneticReal,  ///< ± cos θ Re h: dR/d ddelta = 2 of it; only where asked for
  kMagneticImag,  ///< ± cos θ Im h: dR/d dbeta = 2 of it
  kSweepRows
};

/// One ray at some strips. Arrays of nodes are [register][place].
struct ParrattSweep {
  const ParrattStack<double>* stack;
  const double *s, *weight;
  const std::int32_t* strip;  ///< of each register, not decreasing
  std::int32_t registers;
  double sigma, pi;   ///< shares of the ray, squared moduli
  int sense;          ///< of the magnetic shift: 0 or 1
  bool magnetic;      ///< with the magnetic rows
  bool slopes;        ///< with slope
  double* intensity;  ///< of each node; NaN where the angle is lost to lanes, which then add nothing for it
  double* slope;      ///< of each node: weight dR/ds
  double* rows;       ///< [strip][entry][SweepRow][place], to which the kernel adds
  void* tape;         ///< tape_bytes for each entry, aligned to 64 bytes
};

/// The kernel of one instruction set.
struct ParrattSweepKernel {
  std::int32_t places;      ///< nodes per register
  std::int32_t tape_bytes;  ///< per entry
  void (*run)(const ParrattSweep& sweep);
};

}  // namespace tolvik::engine::lanes
