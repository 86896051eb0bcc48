// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/map_file.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "optics/rays.h"

namespace tolvik {
namespace {

bool IsIgnored(const std::string& line) {
  return line.size() <= 5 || line.starts_with("#") || line.starts_with("--");
}

void ReportCurves(const CArray<CDataset>& curves) {
  for (std::int32_t i = 0; i < curves.size; ++i)
    std::fprintf(stderr, "%i: n=%i, e=%lf, p=%s\n", i, curves[i].dataset_qz.size, curves[i].datasetenergy,
                 GetRayName(FirstRay(curves[i])).c_str());
}

// Smallest and largest of the numbers added; NaN is ignored.
struct Range {
  double lo = 1e99;
  double hi = -1e99;
  void Include(double smallest, double largest) {
    if (smallest < lo) lo = smallest;
    if (largest > hi) hi = largest;
  }
};

}  // namespace

std::vector<MapPoint> ReadMapPoints(std::istream& in) {
  std::vector<MapPoint> points;
  MapPoint point;
  for (std::string line; std::getline(in, line);) {
    if (IsIgnored(line)) continue;
    point = {0, 0, 0, point.letter};
    std::sscanf(line.c_str(), "%lf %lf %lf %c", &point.energy, &point.qz, &point.r, &point.letter);
    points.push_back(point);
  }
  return points;
}

void LoadMapFile(CMapFile& map, const std::string& path) {
  map.constenergy.Clear();
  map.constqz.Clear();
  map.fitdatasets.Clear();
  std::ifstream in(path);
  in.peek();  // a folder can be opened, but not read
  if (!in.is_open() || in.bad()) {
    std::fputs("Error: Could not open file\n", stderr);
    std::exit(1);
  }
  in.clear();  // an empty file is a map without points
  const std::vector<MapPoint> points = ReadMapPoints(in);
  AddMapPoints(map, points);
  std::fprintf(stderr, "Number of points: %zu\n", points.size());
  std::fprintf(stderr, "Number of Reflectivities found: %i\n", map.constenergy.size);
  SortMapCurves(map);
  RemoveShortMapCurves(map);
  SortMapPoints(map);
  ReportCurves(map.constenergy);
}

void PrintMapFile(const CMapFile& map) {
  Range energy;
  Range qz;
  for (const CDataset& curve : map.constenergy) {
    energy.Include(curve.datasetenergy, curve.datasetenergy);
    if (!curve.dataset_qz.IsEmpty()) qz.Include(curve.dataset_qz[0], curve.dataset_qz.Last());
  }
  std::fprintf(stderr, "minimum energy = %lf eV\n", energy.lo);
  std::fprintf(stderr, "maximum energy = %lf eV\n", energy.hi);
  std::fprintf(stderr, "minimum qz = %lf 1/A\n", qz.lo);
  std::fprintf(stderr, "maximum qz = %lf 1/A\n", qz.hi);
  for (const CDataset& curve : map.constenergy) {
    if (IsPiRay(FirstRay(curve))) continue;
    for (std::int32_t i = 0; i < curve.dataset_qz.size; ++i)
      std::printf("%e %e %e\n", curve.datasetenergy, curve.dataset_qz[i], curve.dataset_R0[i]);
  }
}

}  // namespace tolvik
