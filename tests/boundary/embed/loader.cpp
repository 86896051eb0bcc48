// SPDX-License-Identifier: GPL-2.0-or-later
// Loads a state, writes it and loads that, in a project that has built Tolvik as a part of itself.
#include <tolvik/state_file.h>

#include <cstdio>

#if __has_include("model/status.h")
#error "the private headers of Tolvik are in reach"
#endif

int main(int argc, char** argv) {
  tolvik::CState state, again;
  if (argc != 3 || !tolvik::LoadState(state, argv[1])) return std::puts("cannot load the state"), 1;
  const int layers = 0.5 + state.layers.size;  // an error where -Wconversion comes along
  if (!tolvik::SaveState(state, argv[2]) || !tolvik::LoadState(again, argv[2]))
    return std::puts("cannot write it"), 1;
  if (layers != 2 || again.layers.size != layers) return std::puts("the layers are lost"), 1;
  return again.layers[0].layer_delta == 7.6e-6 ? 0 : (std::puts("delta is another one"), 1);
}
