// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/plot_writer.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

#include "model/dataset.h"
#include "model/safe_file.h"
#include "optics/rays.h"

namespace tolvik {
namespace {

constexpr double kSameEnergy = 0.01;  // eV; as when the points of the map were gathered

// Curves of one energy, by their index among the blocks of the data file.
struct Picture {
  double energy;
  std::vector<int> blocks;
};

template <class... Values>
std::string Format(const char* format, Values... values) {
  std::array<char, 1024> text;
  std::snprintf(text.data(), text.size(), format, values...);
  return text.data();
}

std::vector<const CDataset*> FilledCurves(const CMapFile& map) {
  std::vector<const CDataset*> curves;
  for (const CDataset& curve : map.constenergy)
    if (!curve.dataset_qz.IsEmpty() && curve.dataset_R0.size >= curve.dataset_qz.size)
      curves.push_back(&curve);
  return curves;
}

// Energies in the order of their first curves.
std::vector<Picture> MakePictures(const std::vector<const CDataset*>& curves) {
  std::vector<Picture> pictures;
  for (std::size_t i = 0; i < curves.size(); ++i) {
    const double energy = curves[i]->datasetenergy;
    std::size_t k = 0;
    while (k < pictures.size() && !(std::abs(pictures[k].energy - energy) <= kSameEnergy)) ++k;
    if (k == pictures.size()) pictures.push_back({energy, {}});
    pictures[k].blocks.push_back(static_cast<int>(i));
  }
  return pictures;
}

void WriteScript(std::ostream& out, const std::vector<const CDataset*>& curves) {
  const std::vector<Picture> pictures = MakePictures(curves);
  out << "set term png\n"
      << "set logscale y\n"
      << "set xlabel \"qz\"\n"
      << "set ylabel \"R\"\n"
      << "energies=\"";
  for (const Picture& picture : pictures) out << Format("%lf ", picture.energy);
  out << "\"\n";
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    out << Format("set output \"pic%04i.png\" \n", static_cast<int>(i));
    out << "plot [0.05:0.4] [0.0000001:0.01] sqrt(-1) title\"\"";
    for (const int block : pictures[i].blocks) {
      const std::string name = GetRayName(FirstRay(*curves[static_cast<std::size_t>(block)]));
      out << Format(", \"refl.txt\" every :::%i::%i w lp title \"%lfeV p=", block, block, pictures[i].energy);
      out << name << "\"";
    }
    out << "\n";
  }
}

void WriteData(std::ostream& out, const std::vector<const CDataset*>& curves) {
  for (const CDataset* curve : curves) {
    for (std::int32_t i = 0; i < curve->dataset_qz.size; ++i) {
      const double value = TranslateValue(*curve, curve->dataset_R0[i]);
      out << Format("%lf %e\n", curve->dataset_qz[i], value);
    }
    out << "\n";
  }
}

}  // namespace

void WriteSummaryPlot(const CMapFile& map) {
  SafeFile script("summary/plot.gp");
  SafeFile data("summary/refl.txt");
  if (!script.IsOpen() || !data.IsOpen()) {
    std::fputs("Error: Could not open for summary/plot.gp", stderr);
    std::exit(1);
  }
  const std::vector<const CDataset*> curves = FilledCurves(map);
  WriteScript(script.Stream(), curves);
  WriteData(data.Stream(), curves);
  data.Commit();
  script.Commit();
}

}  // namespace tolvik
