// SPDX-License-Identifier: GPL-2.0-or-later
// The functions of functions.h as a kernel, so that tests can call them on every instruction set.
#pragma once

#include "engine/lanes/kernels.h"
#include "engine/simd/functions.h"

namespace tolvik::engine::lanes {

template <class V>
struct FunctionBlock {
  using L = Lanes<V>;
  using Scalar = typename L::Scalar;

  static void Run(const Scalar* x, std::int32_t count, const FunctionValues<Scalar>& values) {
    alignas(64) Scalar in[L::size], out[6][L::size];
    for (std::int32_t first = 0; first < count; first += L::size) {
      const int used = count - first < L::size ? count - first : L::size;
      for (int i = 0; i < L::size; ++i) in[i] = x[first + (i < used ? i : 0)];
      const L argument = L::Load(in);
      L sine, cosine, inverse;
      SinCos(argument, sine, cosine);
      Exp(argument).Store(out[0]);
      sine.Store(out[1]);
      cosine.Store(out[2]);
      const L root = SquareRootAndInverse(abs(argument), inverse);
      root.Store(out[3]);
      inverse.Store(out[4]);
      Quotient(root, argument).Store(out[5]);
      Scalar* const results[6] = {values.exp,  values.sine,         values.cosine,
                                  values.root, values.inverse_root, values.quotient};
      for (int k = 0; k < 6; ++k) {
        for (int i = 0; i < used; ++i) results[k][first + i] = out[k][i];
      }
    }
  }
};

}  // namespace tolvik::engine::lanes
