// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/algorithms/modes.tpp"
#include "engine/algorithms/quartic.tpp"
#include "engine/precision/instances.h"

namespace tolvik::engine {

TOLVIK_INSTANCES(double);

// For the samples of a derivative.
template ResolutionRule<double> RuleOfResolution<double>(double);

// For the consistency page, which works in double.
template int ClassifyTensor<double>(double, const Tensor<double>&);
template void SolveModes<double>(const Cplx<double>&, const Cplx<double>&, const Cplx<double>&,
                                 const Cplx<double>&, const Cplx<double>&, Cplx<double> (&)[4]);

}  // namespace tolvik::engine
