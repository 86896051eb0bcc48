// SPDX-License-Identifier: GPL-2.0-or-later
#include "server/query.h"

#include <locale>
#include <sstream>
#include <utility>

namespace tolvik {
namespace {

constexpr std::string_view kGet = "GET /";

void ReadNamed(std::string_view token, std::string_view name, double& value) {
  if (!token.starts_with(name)) return;
  std::istringstream in{std::string(token.substr(name.size()))};
  in.imbue(std::locale::classic());
  in >> value;
}

}  // namespace

std::vector<std::string> SplitQuery(std::string_view target) {
  target = target.substr(0, target.find_first_of(std::string_view(" \0", 2)));
  std::vector<std::string> tokens;
  std::string buffer;
  bool first = true;
  for (const char c : target) {
    if (c != '&') buffer += c;
    if (c != '?' && c != '&') continue;
    if (!first) tokens.push_back(std::move(buffer));
    buffer.clear();
    first = false;
  }
  if (!first) tokens.push_back(std::move(buffer));
  return tokens;
}

void ReadQuery(std::string_view request, PageQuery& query) {
  if (!request.starts_with(kGet)) return;
  for (const std::string& token : SplitQuery(request.substr(kGet.size()))) {
    ReadNamed(token, "qz=", query.qz);
    ReadNamed(token, "epsilon=", query.epsilon);
    ReadNamed(token, "energy=", query.energy);
  }
}

}  // namespace tolvik
