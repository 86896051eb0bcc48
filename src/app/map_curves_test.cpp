// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/map_curves.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <utility>

#include "optics/rays.h"

namespace tolvik {
namespace {

const double kNaN = std::nan("");

std::string Describe(const CArray<CDataset>& curves) {
  std::string text;
  for (const CDataset& curve : curves) {
    text += GetRayName(FirstRay(curve)) + " " + std::to_string(curve.datasetenergy) + " " +
            std::string(curve.datasettitle.View()) + ":";
    for (std::int32_t i = 0; i < curve.dataset_qz.size; ++i)
      text += " (" + std::to_string(curve.dataset_eng[i]) + " " + std::to_string(curve.dataset_qz[i]) + " " +
              std::to_string(curve.dataset_R0[i]) + ")";
    text += "\n";
  }
  return text;
}

TEST(AddConstEnergyPoint, GathersByEnergyAndPolarisation) {
  CState state;
  CMapFile map(state);
  AddConstEnergyPoint(map, 700, 0.1, 1e-3, 's');
  AddConstEnergyPoint(map, 700.0099, 0.2, 2e-3, 's');  // within 0.01 eV: the curve keeps 700
  AddConstEnergyPoint(map, 700, 0.1, 3e-3, 'p');
  AddConstEnergyPoint(map, 700.0102, 0.1, 4e-3, 's');
  EXPECT_EQ(
      Describe(map.constenergy),
      "sigma 700.000000 from map 700.000000: (700.000000 0.100000 0.001000) (700.009900 0.200000 0.002000)\n"
      "pi 700.000000 from map 700.000000: (700.000000 0.100000 0.003000)\n"
      "sigma 700.010200 from map 700.010200: (700.010200 0.100000 0.004000)\n");
  EXPECT_EQ(map.constqz.size, 0);
  EXPECT_EQ(map.constenergy[0].datasetactive, 0);
  EXPECT_EQ(map.constenergy[0].datasetmultiplicator, 1.0);
}

TEST(AddConstEnergyPoint, TakesTheFirstOfTwoCurvesInReach) {
  CState state;
  CMapFile map(state);
  AddConstEnergyPoint(map, 700, 0.1, 1, 's');
  AddConstEnergyPoint(map, 700.015, 0.1, 1, 's');
  AddConstEnergyPoint(map, 700.009, 0.2, 1, 's');  // nearer to the second
  EXPECT_EQ(map.constenergy[0].dataset_qz.size, 2);
  EXPECT_EQ(map.constenergy[1].dataset_qz.size, 1);
}

TEST(AddConstEnergyPoint, VerticalIsSigmaAndHorizontalIsPi) {
  CState state;
  CMapFile map(state);
  for (char letter : {'s', 'v', 'p', 'h', 'v', 's'}) AddConstEnergyPoint(map, 700, 0.1, 1, letter);
  ASSERT_EQ(map.constenergy.size, 2);
  EXPECT_EQ(map.constenergy[0].dataset_qz.size, 4);
  EXPECT_EQ(GetRayName(FirstRay(map.constenergy[0])), "sigma");
  EXPECT_EQ(map.constenergy[1].dataset_qz.size, 2);
  EXPECT_EQ(GetRayName(FirstRay(map.constenergy[1])), "pi");
}

TEST(AddConstEnergyPoint, SetsBothRays) {
  CState state;
  CMapFile map(state);
  for (char letter : {'s', 'p', 'l', 'r'}) AddConstEnergyPoint(map, 700, 0.1, 1, letter);
  ASSERT_EQ(map.constenergy.size, 4);
  const char* const names[] = {"sigma", "pi", "left circular", "right circular"};
  for (std::int32_t i = 0; i < 4; ++i) {
    EXPECT_EQ(GetRayName(FirstRay(map.constenergy[i])), names[i]);
    EXPECT_EQ(GetRayName(SecondRay(map.constenergy[i])), names[i]);
  }
  // (1, i)/√2 in (sigma, pi)
  EXPECT_NEAR(map.constenergy[2].datasetray2sigmare, std::sqrt(0.5), 1e-15);
  EXPECT_NEAR(map.constenergy[2].datasetray2piim, std::sqrt(0.5), 1e-15);
}

TEST(AddConstEnergyPoint, DropsWhatIsNotPositive) {
  CState state;
  CMapFile map(state);
  for (double r : {0.0, -0.0, -1e-9, -std::numeric_limits<double>::infinity()}) {
    AddConstEnergyPoint(map, 700, 0.1, r, 's');
    AddConstQzPoint(map, 700, 0.1, r, 's');
  }
  EXPECT_EQ(map.constenergy.size, 0);
  EXPECT_EQ(map.constqz.size, 0);
  AddConstEnergyPoint(map, 700, 0.1, kNaN, 's');
  EXPECT_EQ(map.constenergy.size, 1);
}

TEST(AddConstEnergyPoint, UnknownLetterOrEnergyBeginsACurveEachTime) {
  CState state;
  CMapFile map(state);
  AddConstEnergyPoint(map, 700, 0.1, 1, 'x');
  AddConstEnergyPoint(map, 700, 0.1, 1, 'x');
  AddConstEnergyPoint(map, 700, 0.1, 1, 's');  // the rays of "x" are those of sigma
  AddConstEnergyPoint(map, kNaN, 0.1, 1, 's');
  AddConstEnergyPoint(map, kNaN, 0.1, 1, 's');
  ASSERT_EQ(map.constenergy.size, 4);
  EXPECT_EQ(map.constenergy[0].dataset_qz.size, 2);
}

TEST(AddConstQzPoint, GathersByTheQzOfTheFirstPoint) {
  CState state;
  CMapFile map(state);
  AddConstQzPoint(map, 700, 0.1, 1e-3, 'l');
  AddConstQzPoint(map, 710, 0.1009, 2e-3, 'l');
  AddConstQzPoint(map, 720, 0.10102, 3e-3, 'l');  // near the second point, not near the first
  AddConstQzPoint(map, 720, 0.1, 4e-3, 'r');
  EXPECT_EQ(Describe(map.constqz),
            "left circular 700.000000 from map 0.100000: (700.000000 0.100000 0.001000) (710.000000 0.100900 "
            "0.002000)\n"
            "left circular 720.000000 from map 0.101020: (720.000000 0.101020 0.003000)\n"
            "right circular 720.000000 from map 0.100000: (720.000000 0.100000 0.004000)\n");
}

TEST(AddConstEnergyPoint, TitleHoldsTheLargestNumber) {
  CState state;
  CMapFile map(state);
  AddConstEnergyPoint(map, -1.7976931348623157e308, 0.1, 1, 's');
  const std::string_view title = map.constenergy[0].datasettitle.View();
  EXPECT_TRUE(title.starts_with("from map -179769313486231570")) << title;
  EXPECT_TRUE(title.ends_with(".000000")) << title;
}

TEST(AddMapPoints, DoesWhatSinglePointsDo) {
  std::mt19937 random(7);
  std::uniform_int_distribution<int> pick(0, 999);
  const std::string letters = "splrvhxS";
  std::vector<MapPoint> points;
  for (int i = 0; i < 3000; ++i) {
    MapPoint point;
    point.energy = 700 + 0.0017 * (pick(random) % 60);
    point.qz = 0.05 + 0.00031 * (pick(random) % 40);
    point.r = pick(random) % 9 == 0 ? -1 : i + 1;
    point.letter = letters[static_cast<std::size_t>(pick(random)) % letters.size()];
    if (i % 50 == 7) point.energy = kNaN;
    if (i % 50 == 9) point.qz = std::numeric_limits<double>::infinity();
    if (i % 50 == 11) point.r = kNaN;
    points.push_back(point);
  }
  CState state;
  CMapFile plain(state);
  for (const MapPoint& point : points) {
    AddConstEnergyPoint(plain, point.energy, point.qz, point.r, point.letter);
    AddConstQzPoint(plain, point.energy, point.qz, point.r, point.letter);
  }
  CMapFile map(state);
  AddMapPoints(map, points);
  EXPECT_GT(map.constenergy.size, 20);
  EXPECT_EQ(Describe(map.constenergy), Describe(plain.constenergy));
  EXPECT_EQ(Describe(map.constqz), Describe(plain.constqz));
}

CDataset Curve(double energy, char letter, double first_qz, int mark) {
  CDataset curve;
  curve.datasetenergy = energy;
  SetRayFromLetter(FirstRay(curve), letter);
  curve.dataset_qz.Append(first_qz);
  curve.datasettitle.Set(std::to_string(mark));
  return curve;
}

std::string Order(const CArray<CDataset>& curves) {
  std::string order;
  for (const CDataset& curve : curves) order += std::string(curve.datasettitle.View()) + " ";
  return order;
}

// Passes of neighbour exchanges until nothing moves.
template <class Wrong>
void BubbleSort(CArray<CDataset>& curves, Wrong wrong) {
  for (bool moved = true; moved;) {
    moved = false;
    for (std::int32_t i = 0; i + 1 < curves.size; ++i)
      if (wrong(curves[i], curves[i + 1])) {
        std::swap(curves[i], curves[i + 1]);
        moved = true;
      }
  }
}

char Letter(const CDataset& curve) {
  return GetRayName(FirstRay(curve))[0];
}

TEST(SortMapCurves, OrdersAsNeighbourExchangesDo) {
  std::mt19937 random(11);
  std::uniform_int_distribution<int> pick(0, 99);
  const std::string letters = "splr";
  for (int round = 0; round < 50; ++round) {
    CState state;
    CMapFile map(state);
    for (int i = 0; i < 60; ++i) {
      const double energy = pick(random) < 8 ? kNaN : 700 + pick(random) % 20;
      const double qz = pick(random) < 8 ? kNaN : 0.01 * (pick(random) % 20);
      map.constenergy.Append(Curve(energy, letters[static_cast<std::size_t>(pick(random) % 4)], 0.1, i));
      map.constqz.Append(Curve(700, 's', qz, i));
    }
    CMapFile plain = map;
    BubbleSort(plain.constenergy, [](const CDataset& a, const CDataset& b) { return Letter(a) < Letter(b); });
    BubbleSort(plain.constenergy, [](const CDataset& a, const CDataset& b) {
      return Letter(a) == Letter(b) && a.datasetenergy > b.datasetenergy;
    });
    BubbleSort(plain.constqz,
               [](const CDataset& a, const CDataset& b) { return a.dataset_qz[0] > b.dataset_qz[0]; });
    SortMapCurves(map);
    ASSERT_EQ(Order(map.constenergy), Order(plain.constenergy));
    ASSERT_EQ(Order(map.constqz), Order(plain.constqz));
  }
}

TEST(SortMapCurves, SigmaComesBeforeRightPiAndLeft) {
  CState state;
  CMapFile map(state);
  map.constenergy.Append(Curve(700, 'l', 0.1, 0));
  map.constenergy.Append(Curve(700, 'p', 0.1, 1));
  map.constenergy.Append(Curve(710, 's', 0.1, 2));
  map.constenergy.Append(Curve(700, 'r', 0.1, 3));
  map.constenergy.Append(Curve(705, 's', 0.1, 4));
  SortMapCurves(map);
  EXPECT_EQ(Order(map.constenergy), "4 2 3 1 0 ");
}

TEST(RemoveShortMapCurves, ReportsTheIndexAtTheTime) {
  CState state;
  CMapFile map(state);
  for (int points : {9, 10, 3, 1, 16, 9}) {
    CDataset curve;
    for (int i = 0; i < points; ++i) curve.dataset_qz.Append(0.1);
    map.constenergy.Append(curve);
    for (int i = 0; i < 6; ++i) curve.dataset_qz.Append(0.1);  // 15, 16, 9, 7, 22, 15
    map.constqz.Append(curve);
  }
  ::testing::internal::CaptureStderr();
  RemoveShortMapCurves(map);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "delete const energy numnber 0\ndelete const energy numnber 1\ndelete const energy numnber 1\n"
            "delete const energy numnber 2\n"
            "delete const qz numnber 0\ndelete const qz numnber 1\ndelete const qz numnber 1\n"
            "delete const qz numnber 2\n");
  ASSERT_EQ(map.constenergy.size, 2);
  EXPECT_EQ(map.constenergy[0].dataset_qz.size, 10);
  EXPECT_EQ(map.constenergy[1].dataset_qz.size, 16);
  ASSERT_EQ(map.constqz.size, 2);
  EXPECT_EQ(map.constqz[0].dataset_qz.size, 16);
}

TEST(SortMapPoints, MovesTheReflectivityAlong) {
  CState state;
  CMapFile map(state);
  CDataset curve;
  const double qz[] = {0.3, 0.1, 0.2, 0.1}, energy[] = {703, 701, 704, 702};
  for (int i = 0; i < 4; ++i) {
    curve.dataset_qz.Append(qz[i]);
    curve.dataset_R0.Append(i);
    curve.dataset_eng.Append(energy[i]);
  }
  map.constenergy.Append(curve);
  map.constqz.Append(curve);
  SortMapPoints(map);
  const auto numbers = [](const CArray<double>& array) {
    return std::vector<double>(array.begin(), array.end());
  };
  using List = std::vector<double>;
  EXPECT_EQ(numbers(map.constenergy[0].dataset_qz), (List{0.1, 0.1, 0.2, 0.3}));
  EXPECT_EQ(numbers(map.constenergy[0].dataset_R0), (List{1, 3, 2, 0}));
  EXPECT_EQ(numbers(map.constenergy[0].dataset_eng), (List{703, 701, 704, 702}));
  EXPECT_EQ(numbers(map.constqz[0].dataset_eng), (List{701, 702, 703, 704}));
  EXPECT_EQ(numbers(map.constqz[0].dataset_R0), (List{1, 3, 0, 2}));
  EXPECT_EQ(numbers(map.constqz[0].dataset_qz), (List{0.3, 0.1, 0.2, 0.1}));
}

}  // namespace
}  // namespace tolvik
