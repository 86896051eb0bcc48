// SPDX-License-Identifier: GPL-2.0-or-later
// Fuzzes the reader of measured maps, and compares the fast gathering of points with the plain one.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "app/map_curves.h"
#include "app/map_file.h"

namespace {

using namespace tolvik;

constexpr std::size_t kPlainPoints = 300;  // the plain search takes n² steps

bool SameCurves(const CArray<CDataset>& a, const CArray<CDataset>& b) {
  if (a.size != b.size) return false;
  for (std::int32_t i = 0; i < a.size; ++i)
    if (a[i].dataset_qz.size != b[i].dataset_qz.size || !(a[i].datasettitle == b[i].datasettitle))
      return false;
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  const std::vector<MapPoint> points = ReadMapPoints(in);
  CState state;
  CMapFile map(state);
  AddMapPoints(map, points);
  if (points.size() <= kPlainPoints) {
    CMapFile plain(state);
    for (const MapPoint& point : points) {
      AddConstEnergyPoint(plain, point.energy, point.qz, point.r, point.letter);
      AddConstQzPoint(plain, point.energy, point.qz, point.r, point.letter);
    }
    if (!SameCurves(map.constenergy, plain.constenergy) || !SameCurves(map.constqz, plain.constqz))
      std::abort();
  }
  SortMapCurves(map);
  SortMapPoints(map);
  for (const CArray<CDataset>* curves : {&map.constenergy, &map.constqz})
    for (const CDataset& curve : *curves)
      if (curve.dataset_qz.size != curve.dataset_R0.size || curve.dataset_qz.size != curve.dataset_eng.size)
        std::abort();
  return 0;
}
