// SPDX-License-Identifier: GPL-2.0-or-later
#include "boundary/cases/comparison.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <regex>
#include <vector>

namespace tolvik::testing {
namespace {

using nlohmann::json;

std::optional<double> AsNumber(const json& value) {
  if (value.is_number()) return value.get<double>();
  if (!value.is_string()) return std::nullopt;
  const std::string& text = value.get_ref<const std::string&>();
  if (text == "nan") return std::numeric_limits<double>::quiet_NaN();
  if (text == "inf") return std::numeric_limits<double>::infinity();
  if (text == "-inf") return -std::numeric_limits<double>::infinity();
  return std::nullopt;
}

bool Agree(double a, double b, Tolerance tolerance) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  if (std::isinf(a) || std::isinf(b)) return a == b;
  return std::abs(a - b) <= tolerance.abs + tolerance.rel * std::max(std::abs(a), std::abs(b));
}

std::string Tell(const std::string& place, const json& want, const json& got) {
  return place + ": want " + want.dump() + ", got " + got.dump();
}

// A page as texts and numbers in turn.
std::vector<std::string> SplitPage(const std::string& page) {
  static const std::regex number(R"(-?nan|-?inf|-?[0-9]+\.?[0-9]*(e[-+]?[0-9]+)?)");
  std::vector<std::string> pieces;
  std::string::const_iterator at = page.begin();
  for (std::sregex_iterator i(page.begin(), page.end(), number); i != std::sregex_iterator(); ++i) {
    pieces.emplace_back(at, (*i)[0].first);
    pieces.push_back(i->str());
    at = (*i)[0].second;
  }
  pieces.emplace_back(at, page.end());
  return pieces;
}

std::string WithoutBlanks(std::string text) {
  std::erase_if(text, [](char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; });
  return text;
}

}  // namespace

std::optional<std::string> FindDifference(const json& want, const json& got, Tolerance tolerance,
                                          const std::string& place) {
  if (want.is_array() && got.is_array()) {
    if (want.size() != got.size()) {
      return place + ": want " + std::to_string(want.size()) + " values, got " + std::to_string(got.size());
    }
    for (std::size_t i = 0; i < want.size(); ++i) {
      auto found = FindDifference(want[i], got[i], tolerance, place + "[" + std::to_string(i) + "]");
      if (found) return found;
    }
    return std::nullopt;
  }
  // A bool of the record may be given as a number.
  const json plain = got.is_boolean() && want.is_number() ? json(got.get<bool>() ? 1 : 0) : got;
  const auto a = AsNumber(want), b = AsNumber(plain);
  if (a && b) return Agree(*a, *b, tolerance) ? std::nullopt : std::optional(Tell(place, want, got));
  return want == plain ? std::nullopt : std::optional(Tell(place, want, got));
}

std::optional<std::string> FindPageDifference(const std::string& want, const std::string& got,
                                              Tolerance tolerance) {
  const std::size_t want_head = std::min(want.find("<head>"), want.size());
  const std::size_t got_head = std::min(got.find("<head>"), got.size());
  if (WithoutBlanks(want.substr(0, want_head)) != WithoutBlanks(got.substr(0, got_head))) {
    return "body: the text before the head differs";
  }
  const std::vector<std::string> a = SplitPage(want.substr(want_head)), b = SplitPage(got.substr(got_head));
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    const bool is_number = i % 2 == 1;
    const bool same = a[i] == b[i] || (is_number && Agree(std::stod(a[i]), std::stod(b[i]), tolerance));
    if (!same) return Tell("body, piece " + std::to_string(i), a[i], b[i]);
  }
  if (a.size() != b.size()) return "body: " + Tell("pieces", a.size(), b.size());
  return std::nullopt;
}

}  // namespace tolvik::testing
