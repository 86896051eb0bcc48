// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/map_curves.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <tuple>
#include <utility>

#include "app/first_within.h"
#include "optics/rays.h"

namespace tolvik {
namespace {

constexpr double kSameEnergy = 0.01;  // eV
constexpr double kSameQz = 0.001;     // Å⁻¹
constexpr std::int32_t kFewestQzPoints = 10;
constexpr std::int32_t kFewestEnergyPoints = 16;

// The key by which points belong to one curve.
struct CurveKind {
  double tolerance;
  double (*key_of_curve)(const CDataset&);
  double (*key_of_point)(const MapPoint&);
};
constexpr CurveKind kConstEnergy = {kSameEnergy, [](const CDataset& curve) { return curve.datasetenergy; },
                                    [](const MapPoint& point) { return point.energy; }};
constexpr CurveKind kConstQz = {kSameQz, [](const CDataset& curve) { return curve.dataset_qz[0]; },
                                [](const MapPoint& point) { return point.qz; }};

// Vertical and horizontal are other words for sigma and pi.
char RayLetter(char letter) {
  return letter == 'v' ? 's' : letter == 'h' ? 'p' : letter;
}

char LabelLetter(const CDataset& curve) {
  return GetRayName(FirstRay(curve))[0];
}

void AppendPoint(CDataset& curve, const MapPoint& point) {
  curve.dataset_qz.Append(point.qz);
  curve.dataset_R0.Append(point.r);
  curve.dataset_eng.Append(point.energy);
}

void AppendCurve(CArray<CDataset>& curves, const MapPoint& point, double key) {
  CDataset curve;
  curve.datasetenergy = point.energy;
  SetRayFromLetter(FirstRay(curve), RayLetter(point.letter));
  SetRayFromLetter(SecondRay(curve), RayLetter(point.letter));
  AppendPoint(curve, point);
  std::array<char, 400> title;
  std::snprintf(title.data(), title.size(), "from map %lf", key);
  curve.datasettitle.Set(title.data());
  curves.Append(std::move(curve));
}

void AddPoint(CArray<CDataset>& curves, const CurveKind& kind, const MapPoint& point) {
  if (point.r <= 0) return;
  const double key = kind.key_of_point(point);
  const auto same = [&](const CDataset& curve) {
    return std::abs(kind.key_of_curve(curve) - key) <= kind.tolerance &&
           LabelLetter(curve) == RayLetter(point.letter);
  };
  CDataset* const curve = std::find_if(curves.begin(), curves.end(), same);
  if (curve != curves.end())
    AppendPoint(*curve, point);
  else
    AppendCurve(curves, point, key);
}

// The letter of the curve that a point would begin.
char LetterOfNewCurve(const MapPoint& point) {
  std::array<double, 4> ray = {1, 0, 0, 0};  // of a default dataset
  SetRayFromLetter(ray, RayLetter(point.letter));
  return GetRayName(ray)[0];
}

void AddPoints(CArray<CDataset>& curves, const CurveKind& kind, const std::vector<MapPoint>& points) {
  std::map<char, std::vector<double>> keys;
  for (const MapPoint& point : points) keys[LetterOfNewCurve(point)].push_back(kind.key_of_point(point));
  std::map<char, FirstWithin> found;
  for (auto& [letter, list] : keys) found.emplace(letter, FirstWithin(std::move(list), kind.tolerance));

  for (const MapPoint& point : points) {
    if (point.r <= 0) continue;
    const double key = kind.key_of_point(point);
    const auto known = found.find(RayLetter(point.letter));
    const std::int32_t index = known == found.end() ? -1 : known->second.Find(key);
    if (index >= 0) {
      AppendPoint(curves[index], point);
    } else {
      AppendCurve(curves, point, key);
      found.at(LetterOfNewCurve(point)).Add(key, curves.size - 1);
    }
  }
}

// Equivalent to exchanging neighbours in the wrong order: a stable sort in which nothing passes a NaN.
template <class Iterator, class Key>
void SortRuns(Iterator begin, Iterator end, Key key) {
  const auto by_key = [&](const auto& a, const auto& b) { return key(a) < key(b); };
  while (begin != end) {
    const Iterator run = std::find_if(begin, end, [&](const auto& item) { return std::isnan(key(item)); });
    if (!std::is_sorted(begin, run, by_key)) std::stable_sort(begin, run, by_key);
    begin = run == end ? end : run + 1;
  }
}

void RemoveShort(CArray<CDataset>& curves, std::int32_t fewest, const char* kind) {
  CArray<CDataset> kept;
  for (CDataset& curve : curves) {
    if (curve.dataset_qz.size >= fewest)
      kept.Append(std::move(curve));
    else
      std::fprintf(stderr, "delete const %s numnber %i\n", kind, kept.size);
  }
  curves.Swap(kept);
}

void SortPoints(CArray<double>& abscissa, CArray<double>& values) {
  std::vector<std::pair<double, double>> points;
  for (std::int32_t i = 0; i < abscissa.size; ++i) points.emplace_back(abscissa[i], values[i]);
  SortRuns(points.begin(), points.end(), [](const auto& point) { return point.first; });
  for (std::int32_t i = 0; i < abscissa.size; ++i)
    std::tie(abscissa[i], values[i]) = points[static_cast<std::size_t>(i)];
}

}  // namespace

void AddConstEnergyPoint(CMapFile& map, double energy, double qz, double r, char letter) {
  AddPoint(map.constenergy, kConstEnergy, {energy, qz, r, letter});
}

void AddConstQzPoint(CMapFile& map, double energy, double qz, double r, char letter) {
  AddPoint(map.constqz, kConstQz, {energy, qz, r, letter});
}

void AddMapPoints(CMapFile& map, const std::vector<MapPoint>& points) {
  AddPoints(map.constenergy, kConstEnergy, points);
  AddPoints(map.constqz, kConstQz, points);
}

void SortMapCurves(CMapFile& map) {
  CArray<CDataset>& curves = map.constenergy;
  std::stable_sort(curves.begin(), curves.end(),
                   [](const CDataset& a, const CDataset& b) { return LabelLetter(a) > LabelLetter(b); });
  for (CDataset* begin = curves.begin(); begin != curves.end();) {
    const char letter = LabelLetter(*begin);
    CDataset* const end = std::find_if(begin, curves.end(),
                                       [&](const CDataset& curve) { return LabelLetter(curve) != letter; });
    SortRuns(begin, end, kConstEnergy.key_of_curve);
    begin = end;
  }
  SortRuns(map.constqz.begin(), map.constqz.end(), kConstQz.key_of_curve);
}

void RemoveShortMapCurves(CMapFile& map) {
  RemoveShort(map.constenergy, kFewestQzPoints, "energy");
  RemoveShort(map.constqz, kFewestEnergyPoints, "qz");
}

void SortMapPoints(CMapFile& map) {
  for (CDataset& curve : map.constenergy) SortPoints(curve.dataset_qz, curve.dataset_R0);
  for (CDataset& curve : map.constqz) SortPoints(curve.dataset_eng, curve.dataset_R0);
}

}  // namespace tolvik
