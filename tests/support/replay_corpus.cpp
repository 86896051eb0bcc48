// SPDX-License-Identifier: GPL-2.0-or-later
// Feeds every file of the folders and files named on the command line to a fuzz target, without a fuzzer: the
// corpus as a plain test.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void Replay(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  std::printf("%s: %zu bytes\n", file.filename().c_str(), bytes.size());
  std::fflush(stdout);  // so that the last name is printed when the target dies
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
  int files = 0;
  for (int i = 1; i < argc; ++i)
    for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
      if (entry.is_regular_file()) {
        Replay(entry.path());
        ++files;
      }
  std::printf("%d inputs\n", files);
  return files > 0 ? 0 : 1;  // an empty corpus tests nothing
}
