// SPDX-License-Identifier: GPL-2.0-or-later
// The Parratt recursion for blocks of angles.
//
// Symbols of the recursion of Parratt, Phys. Rev. 95, 359 (1954), as the kernels write it:
//
// w      normal wavevector in units of k0, w² = s² + (n - 1)(n + 1) with s = sin θ: no cancellation at
//        grazing angles, where n² - cos²θ loses up to ten digits
// v      2 w, which saves the halves of a complex root; it cancels in the coefficients
// F, E   Névot-Croce factor of an interface; factor of the double passage of a slab
// t, q   numerator and denominator of a coefficient, both times the denominator, which leaves no difference
//        of waves (parratt_joint.h)
// N, D   numerator and denominator of an amplitude ratio. The recursion is
//        N <- t D + q E N,  D <- q D + t E N,  and one division at the end serves the whole stack
//
// Fallback: where a wavevector is so small that n² - cos²θ is mere rounding error, where a roughness factor
// overflows, or where the result is not finite, the angle is recomputed by the plain recursion.
#pragma once

#include "engine/lanes/parratt_shared.h"
#include "engine/lanes/parratt_stepwise.h"

namespace tolvik::engine::lanes {

/// Walk: ParrattStepwise or ParrattShared, the two ways through a stack.
template <class Walk>
class ParrattBlock : private Walk {
  using typename Walk::Real;

 public:
  using typename Walk::Ray, typename Walk::Scalar, typename Walk::Stack;

  static bool Run(const Stack& stack, const Scalar* s, std::int32_t count, const Ray* rays,
                  std::int32_t ray_count) {
    bool finite = true;
    for (std::int32_t first = 0; first < count; first += Real::size) {
      const int size = count - first < Real::size ? count - first : Real::size;
      ParrattBlock block(stack, s + first, size);
      // Angles in doubt in the first sense stay so in the second: the plain recursion does both.
      for (int sense = 0; sense < stack.senses; ++sense) {
        block.BeginSense(sense);
        block.WalkThrough();
        block.CalcReflectivities();
        for (std::int32_t r = 0; r < ray_count; ++r) {
          if (stack.senses == 1 || r == sense) finite &= block.StoreRay(rays[r], first, size);
        }
      }
    }
    return finite;
  }

 private:
  using Walk::Walk;
};

/// The kernel of a stack (ParrattKernel).
template <class V>
struct ParrattKernelOf {
  using Scalar = typename Lanes<V>::Scalar;

  static bool Run(const ParrattStack<Scalar>& stack, const Scalar* s, std::int32_t count,
                  const ParrattRay<Scalar>* rays, std::int32_t ray_count) {
    const auto run =
        stack.shared ? ParrattBlock<ParrattShared<V>>::Run : ParrattBlock<ParrattStepwise<V>>::Run;
    return run(stack, s, count, rays, ray_count);
  }
};

}  // namespace tolvik::engine::lanes
