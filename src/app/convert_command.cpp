// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/convert_command.h"

#include <cstdio>
#include <string>

#include "model/safe_file.h"
#include "optics/material.h"
#include "optics/tensor.h"

namespace tolvik {
namespace {

// Azimuth and polar angle of the magnetisation, degrees: in the surface, so that xz and zx carry it.
constexpr double kGamma = 90.0, kPhi = 90.0;

void AppendNumber(std::string& text, double value) {
  char number[32];
  std::snprintf(number, sizeof number, "%e ", value);
  text += number;
}

// One line: the energy and the nine tensor elements, row by row, real before imaginary.
std::string TensorLine(double energy, const CLayer& layer) {
  std::string line;
  AppendNumber(line, energy);
  for (int i = 0; i < 9; ++i) {
    AppendNumber(line, layer.Epsilon(i / 3, i % 3).real());
    AppendNumber(line, layer.Epsilon(i / 3, i % 3).imag());
  }
  return line + '\n';
}

bool WriteTensors(COpticalTable& material, bool magnetic, const std::string& stem) {
  SafeFile file(stem + ".e");
  if (!file.IsOpen()) return false;
  file.Stream() << "#converted from " << stem << '\n';
  CLayer layer;
  for (std::uint32_t i = 0; i < material.db.count; ++i) {
    const double energy = material.db.rows[i].energy;
    InterpolateOpticalConstants(material, energy, layer);
    // replaces the tensor of a .e file by one from the constants
    BuildEpsilonTensor(layer, kGamma, kPhi, magnetic ? 1 : 0);
    file.Stream() << TensorLine(energy, layer);
  }
  return file.Commit();
}

}  // namespace

void ConvertOpticalFile(const char* name) {
  COpticalTable material;
  std::printf("load %s\n", name);
  if (!LoadOpticalTable(material, name)) {
    std::fprintf(stderr, "Error: Could not find file %s.db\n", name);
    return;
  }
  const bool magnetic = material.m.count > 0;
  if (!magnetic) {
    std::fprintf(stderr, "Error: Could not find file %s.m. Ignore magneto-optical constants\n", name);
  }
  std::printf("set magnetic direction to gamma=90 degrees and phi=90 degrees\n");
  std::printf("save %s.e\n", name);
  if (!WriteTensors(material, magnetic, name)) {
    std::fprintf(stderr, "Error: Could not save file %s.e\n", name);
  }
}

}  // namespace tolvik
