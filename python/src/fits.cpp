// SPDX-License-Identifier: GPL-2.0-or-later
// The program's own optimisers, step by step.
#include <algorithm>
#include <limits>
#include <memory>
#include <mutex>

#include "fit/evolution.h"
#include "fit/fit_variables.h"
#include "fit/multi_fit.h"
#include "parts.h"
#include "tolvik/choices.h"
#include "working_copy.h"

namespace tolvik::python {
namespace {

// Steps share a pointer of the process (fit/chi_square_fit.h), so one runs at a time.
std::mutex step_mutex;

template <class Step>
void RunStep(Step step) {
  RunWithoutGil([&](Outcome&) {
    const std::lock_guard lock(step_mutex);
    step();
  });
}

// A state at the values of its variables; conditions, measurements and options stay as they were given.
PyState StateAt(const CState& given, const CArray<CFitVariable>& variables) {
  CState state = given;
  for (std::int32_t i = 0; i < std::min(state.fitvariables.size, variables.size); ++i) {
    state.fitvariables[i].fit_value = variables[i].fit_value;
    state.fitvariables[i].fit_sigma = variables[i].fit_sigma;
  }
  ApplyFitVariables(state);
  return {std::make_shared<StateBox>(std::move(state))};
}

CState FullCopy(const PyState& self) {
  self.box->Refresh();
  return self.get();
}

class FitSteps {
 public:
  explicit FitSteps(const PyState& state)
      : given_(FullCopy(state)), fit_(given_), best_(given_.fitvariables) {
    fit_.RestartFit();
  }

  double Step() {
    RunStep([this] {
      fit_.Iterate();
      Keep(fit_.lasterror, fit_.state.fitvariables);
      if (given_.fitalgorithm == FitAlgorithm::kAnnealing && fit_.besterror < best_error_) KeepAnnealed();
    });
    return fit_.lasterror;
  }

  PyState Snapshot() const { return StateAt(given_, fit_.state.fitvariables); }
  PyState Best() const { return StateAt(given_, best_); }
  double BestError() const { return best_error_; }

 private:
  void Keep(double error, const CArray<CFitVariable>& variables) {
    if (!(error < best_error_)) return;
    best_error_ = error;
    best_ = variables;
  }
  // Annealing leaves the model at its last trial and the best point beside it.
  void KeepAnnealed() {
    CArray<CFitVariable> variables = fit_.fitvariables;
    for (std::int32_t i = 0; i < std::min(variables.size, fit_.bestparameters.size); ++i) {
      variables[i].fit_value = fit_.bestparameters[i];
    }
    Keep(fit_.besterror, variables);
  }

  CState given_;
  CMultiFit fit_;
  CArray<CFitVariable> best_;
  double best_error_ = std::numeric_limits<double>::infinity();
};

class EvolutionSteps {
 public:
  explicit EvolutionSteps(const PyState& state)
      : given_(FullCopy(state)), evolution_(given_), best_(given_.fitvariables) {}

  double Step() {
    RunStep([this] { evolution_.IterateQuietly(best_, best_error_); });
    const CArray<double>& history = evolution_.besthistory;
    return history.IsEmpty() ? best_error_ : history.Last();
  }

  PyState Snapshot() const {
    if (evolution_.population.IsEmpty()) return StateAt(given_, best_);
    return StateAt(given_, evolution_.population[0].fitvariables);
  }
  PyState Best() const { return StateAt(given_, best_); }
  double BestError() const { return best_error_; }

 private:
  CState given_;
  CEvolution evolution_;
  CArray<CFitVariable> best_;
  double best_error_ = std::numeric_limits<double>::infinity();
};

template <class Steps>
void DefineSteps(py::module_& module, const char* name) {
  py::class_<Steps> cls(module, name);
  cls.def(py::init<const PyState&>());
  cls.def("_step", &Steps::Step);
  cls.def("_snapshot", &Steps::Snapshot);
  cls.def("_best", &Steps::Best);
  cls.def_property_readonly("best_error", &Steps::BestError);
}

}  // namespace

void DefineFits(py::module_& module) {
  DefineSteps<FitSteps>(module, "Fit");
  DefineSteps<EvolutionSteps>(module, "Evolution");
}

}  // namespace tolvik::python
