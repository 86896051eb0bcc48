// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/options.h"

#include <cstdio>
#include <string_view>

#include "app/command_table.h"
#include "app/convert_command.h"

namespace tolvik {
namespace {

constexpr int kBuild = 58;

// The eight words after -map and the names around them: program, -map, eight words, a state file.
constexpr int kLeastArgumentsOfMap = 11;

// The words of the command line after the current one; beyond the last one words are empty.
class Words {
 public:
  Words(int argc, const char* const* argv) : argc_(argc), argv_(argv) {}
  bool AtEnd() const { return next_ >= argc_; }
  const char* Take() { return AtEnd() ? "" : argv_[next_++]; }
  std::string_view Ahead(int distance) const {
    return next_ + distance < argc_ ? argv_[next_ + distance] : "";
  }
  int Count() const { return argc_; }

 private:
  int argc_;
  const char* const* argv_;
  int next_ = 1;
};

void ReadNumber(const char* word, double& value) {
  std::sscanf(word, "%lf", &value);
}
void ReadNumber(const char* word, std::int32_t& value) {
  std::sscanf(word, "%i", &value);
}

// A word that does not parse leaves its value unchanged; nothing is checked.
ScanResult ScanMap(Words& words, CMapRange& range) {
  if (words.Count() < kLeastArgumentsOfMap || words.Ahead(0) != "E" || words.Ahead(1) != "Q") {
    return ScanResult::usage;
  }
  words.Take();
  words.Take();
  range.id1 = MapAxis::kEnergy;
  range.id2 = MapAxis::kQz;
  for (double* value : {&range.min1, &range.max1, &range.min2, &range.max2}) ReadNumber(words.Take(), *value);
  for (std::int32_t* value : {&range.n1, &range.n2}) ReadNumber(words.Take(), *value);
  // Readers of this output rely on these labels, although two of the four are wrong.
  std::fprintf(stderr, "#min1 = %lf\n#max2 = %lf\n#min1 = %lf\n#max2 = %lf\n", range.min1, range.max1,
               range.min2, range.max2);
  std::fprintf(stderr, "#n1 = %i\n#n2 = %i\n", range.n1, range.n2);
  return ScanResult::go_on;
}

ScanResult ScanOption(std::string_view option, Words& words, Options& options) {
  if (option == "-test") return ScanResult::done;
  if (option == "-v") {
    std::printf("Tolvik version %s (build %i)\n", TOLVIK_VERSION, kBuild);
    return ScanResult::failed;
  }
  if (option == "-convert") {
    if (words.AtEnd()) return ScanResult::usage;
    ConvertOpticalFile(words.Take());
    return ScanResult::done;
  }
  if (option == "-map") {
    const ScanResult result = ScanMap(words, options.maprange);
    if (result != ScanResult::go_on) return result;
  }
  if (IsCommand(option)) options.flags.emplace(option);
  return ScanResult::go_on;
}

}  // namespace

ScanResult ScanArguments(int argc, const char* const* argv, Options& options) {
  Words words(argc, argv);
  while (!words.AtEnd()) {
    const std::string_view word = words.Take();
    if (!word.starts_with('-')) {
      options.names.emplace_back(word);
      continue;
    }
    const ScanResult result = ScanOption(word, words, options);
    if (result != ScanResult::go_on) return result;
  }
  return ScanResult::go_on;
}

void PrintUsage() {
  std::fputs(
      "usage: Tolvik [options] statefile\n"
      "options\n"
      "\t-refl \t\tReflectivity\n"
      "\t-dicrefl \tDichroic Reflectivity\n"
      "\t-map  \t\t2D reflectivity map\n"
      "\t-convert\tconvert .db and .m file to .e file\n"
      "\t-v\t\t\tprint version info\n"
      "-map usage\n"
      "\t-map [type1] [type2] [min1] [max1] [min1] [max1] [n1] [n2]\n"
      "\t[type1] must be E for energy\n"
      "\t[type2] must be Q for Qz\n"
      "\t[min1] lowest value for parameter 1\n"
      "\t[max1] highest value for parameter 1\n"
      "\t[min1] lowest value for parameter 2\n"
      "\t[max1] highest value for parameter 2\n"
      "\t[n1] number of points to calculate for parameter 1\n"
      "\t[n2] number of points to calculate for parameter 2\n"
      "-convert usage\n"
      "\t-convert [filename without extension]\n",
      stdout);
}

}  // namespace tolvik
