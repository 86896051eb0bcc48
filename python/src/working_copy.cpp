// SPDX-License-Identifier: GPL-2.0-or-later
#include "working_copy.h"

#include "tolvik/return_code.h"

namespace tolvik::python {
namespace {

// Sets a list of a record aside for the length of a copy.
template <class List>
class SetAside {
 public:
  SetAside(List& list, bool really) : list_(list) {
    if (really) kept_.Swap(list_);
    really_ = really;
  }
  ~SetAside() {
    if (really_) kept_.Swap(list_);
  }
  SetAside(const SetAside&) = delete;
  SetAside& operator=(const SetAside&) = delete;

 private:
  List& list_;
  List kept_;
  bool really_ = false;
};

}  // namespace

CState WorkingCopy(StateBox& box, bool with_tables) {
  box.Refresh();
  CState& state = box.state;
  const SetAside measurements(state.datasets, true);
  const SetAside tables(state.opticaltables, !with_tables && state.ocautomatic == 0);
  const SetAside default_script(state.defaultscriptlines, true);
  return CState(state);
}

void RaiseOutcome(const Outcome& outcome) {
  if (outcome.script.code == kScriptFailed) Raise("script_compilation", outcome.script.message);
  if (outcome.script.code == kScriptStopped) Raise("script_execution", outcome.script.message);
  if (outcome.code == ReturnCode::kWrongDataPoints) {
    Raise("out_of_reach", outcome.index, outcome.value, outcome.width, outcome.limit);
  }
  Raise("calculation", outcome.index, outcome.exception);
}

}  // namespace tolvik::python
