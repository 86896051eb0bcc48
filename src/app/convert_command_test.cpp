// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/convert_command.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <complex>
#include <cstdio>
#include <sstream>
#include <vector>

#include "support/scratch.h"

namespace tolvik {
namespace {

using Complex = std::complex<double>;

// Output and files of one run of the command.
class ConvertCommand : public ::testing::Test {
 protected:
  void Convert() {
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    ConvertOpticalFile(stem_.c_str());
    std::fflush(stdout);
    output_ = ::testing::internal::GetCapturedStdout();
    errors_ = ::testing::internal::GetCapturedStderr();
  }
  std::string Tensors() const { return folder_.Read("film.e"); }

  // The numbers of a line after the header.
  std::vector<double> Line(int index) const {
    std::istringstream text(Tensors());
    std::string line;
    for (int i = 0; i <= index + 1; ++i) std::getline(text, line);
    std::istringstream numbers(line);
    std::vector<double> values;
    for (double value; numbers >> value;) values.push_back(value);
    return values;
  }
  static Complex Element(const std::vector<double>& line, std::size_t row, std::size_t column) {
    const std::size_t at = 1 + 2 * (3 * row + column);
    return {line.at(at), line.at(at + 1)};
  }

  const testing::ScratchFolder folder_;
  const std::string stem_ = folder_.Path("film");
  std::string output_, errors_;
};

TEST_F(ConvertCommand, WritesADiagonalWithoutMagneticConstants) {
  folder_.Write("film.db", "800 0.25 0\n700 0.5 0.25\n");
  Convert();
  EXPECT_EQ(output_, "load " + stem_ +
                         "\nset magnetic direction to gamma=90 degrees and phi=90 degrees\nsave " + stem_ +
                         ".e\n");
  EXPECT_EQ(errors_, "Error: Could not find file " + stem_ + ".m. Ignore magneto-optical constants\n");
  // n² = (0.5 + 0.25i)² = 0.1875 + 0.25i and 0.75² = 0.5625, by hand
  std::string zero;
  for (int i = 0; i < 6; ++i) zero += "0.000000e+00 ";
  const std::string first = "1.875000e-01 2.500000e-01 ", second = "5.625000e-01 0.000000e+00 ";
  EXPECT_EQ(Tensors(), "#converted from " + stem_ + "\n7.000000e+02 " + first + zero + first + zero + first +
                           "\n8.000000e+02 " + second + zero + second + zero + second + "\n");
}

TEST_F(ConvertCommand, CreatesNothingWithoutADbFile) {
  folder_.Write("film.m", "700 0.1 0.2\n");
  Convert();
  EXPECT_EQ(output_, "load " + stem_ + "\n");
  EXPECT_EQ(errors_, "Error: Could not find file " + stem_ + ".db\n");
  struct stat info;
  EXPECT_NE(stat(folder_.Path("film.e").c_str(), &info), 0);
}

TEST_F(ConvertCommand, MagnetisationInTheSurfaceFillsXz) {
  folder_.Write("film.db", "700 0.001 0.002\n710 0.003 0.004\n720 0.001 0.001\n");
  folder_.Write("film.m", "705 1e-4 2e-4\n715 3e-4 6e-4\n");
  Convert();
  EXPECT_EQ(errors_, "");
  // At 710 eV the middle of the .m table; at 700 its first row holds.
  const Complex magnetic[] = {{1e-4, -2e-4}, {2e-4, -4e-4}, {3e-4, -6e-4}};
  const Complex index[] = {{0.999, 0.002}, {0.997, 0.004}, {0.999, 0.001}};
  for (int i = 0; i < 3; ++i) {
    const auto line = Line(i);
    ASSERT_EQ(line.size(), 19u);
    EXPECT_EQ(line[0], 700 + 10 * i);
    const Complex m = Complex(0, 2) * index[i] * index[i] * magnetic[i];  // 2i n² (deltam - i betam)
    EXPECT_NEAR(std::abs(Element(line, 0, 2) - m), 0, 1e-9);
    EXPECT_NEAR(std::abs(Element(line, 2, 0) + m), 0, 1e-9);
    EXPECT_NEAR(std::abs(Element(line, 1, 1) - index[i] * index[i]), 0, 1e-6);
    // the cosine of 90 degrees in radians is zero up to rounding, not exactly
    for (auto [row, column] : {std::pair{0, 1}, {1, 0}, {1, 2}, {2, 1}}) {
      const double size =
          std::abs(Element(line, static_cast<std::size_t>(row), static_cast<std::size_t>(column)));
      EXPECT_LT(size, 1e-15);
      EXPECT_GT(size, 0);
    }
  }
}

TEST_F(ConvertCommand, AnOlderTensorFileIsReplaced) {
  folder_.Write("film.db", "700 0.5 0.25\n");
  folder_.Write("film.e", "700 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18\n701 " + std::string(5000, '1'));
  Convert();
  EXPECT_EQ(Element(Line(0), 0, 0), Complex(0.1875, 0.25));
  EXPECT_EQ(Element(Line(0), 0, 1), Complex(0, 0));
  EXPECT_TRUE(Line(1).empty());
}

TEST_F(ConvertCommand, TellsThatItCannotSave) {
  folder_.Write("film.db", "700 0.5 0.25\n");
  folder_.Write("film.m", "700 0.5 0.25\n");
  ASSERT_EQ(mkdir(folder_.Path("film.e").c_str(), 0700), 0);  // a folder of that name
  Convert();
  EXPECT_EQ(errors_, "Error: Could not save file " + stem_ + ".e\n");
}

}  // namespace
}  // namespace tolvik
