// SPDX-License-Identifier: GPL-2.0-or-later
// The module tolvik._core. It holds no physics, no defaults and no texts for users: those are in the rooms of
// src/ and in the modules of python/tolvik/.
#include "parts.h"
#include "raise.h"

PYBIND11_MODULE(_core, module) {
  using namespace tolvik::python;
  TranslateMemoryErrors();
  DefineRecords(module);
  StateClass state(module, "State");
  DefineState(state);
  DefineMembers(state);
  DefineServices(state);
  DefineCurves(module);
  DefineFits(module);
  DefineObjective(module);
  DefineProcess(module);
  DefineMaterials(module);
}
