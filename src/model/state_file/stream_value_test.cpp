// SPDX-License-Identifier: GPL-2.0-or-later
// The fast path for plain decimals against the stream extraction that defines the format.
#include "model/state_file/stream_value.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>

namespace tolvik {
namespace {

template <class Number>
Number Found(std::string_view text, Number before) {
  ReadValue(text, before);
  return before;
}

template <class Number>
Number ByStream(const std::string& text, Number before) {
  std::istringstream in(text);
  in.imbue(std::locale::classic());
  in >> before;
  return before;
}

constexpr double kLargest = std::numeric_limits<double>::max();

TEST(StreamValue, DoublesThatAreNoPlainDecimals) {
  const double before = 42;
  EXPECT_EQ(Found("", before), 42) << "no text, no change";
  EXPECT_EQ(Found("   ", before), 42);
  EXPECT_EQ(Found("abc", before), 0);
  EXPECT_EQ(Found("-", before), 0);
  EXPECT_EQ(Found("nan", before), 0);
  EXPECT_EQ(Found("inf", before), 0);
  EXPECT_EQ(Found("1e", before), 0) << "an exponent without digits";
  EXPECT_EQ(Found("3.5eV", before), 0) << "the unit begins like an exponent";
  EXPECT_EQ(Found("0x10", before), 0);
  EXPECT_EQ(Found("1,5", before), 1);
  EXPECT_EQ(Found("3.5nm", before), 3.5);
  EXPECT_EQ(Found("+2.5", before), 2.5);
  EXPECT_EQ(Found("\t7", before), 7);
  EXPECT_EQ(Found("1e400", before), kLargest);
  EXPECT_EQ(Found("-1e400", before), -kLargest);
  EXPECT_EQ(Found("1e-400", before), 0);
  EXPECT_EQ(Found("5e-324", before), 5e-324);
  EXPECT_EQ(Found(std::string_view("5\0006", 3), before), 5) << "a NUL ends a number";
}

TEST(StreamValue, Integers) {
  EXPECT_EQ(Found<std::int32_t>("3.7", 42), 3);
  EXPECT_EQ(Found<std::int32_t>("1e3", 42), 1);
  EXPECT_EQ(Found<std::int32_t>("0x10", 42), 0);
  EXPECT_EQ(Found<std::int32_t>("010", 42), 10);
  EXPECT_EQ(Found<std::int32_t>("x", 42), 0);
  EXPECT_EQ(Found<std::int32_t>("", 42), 42);
  EXPECT_EQ(Found<std::int32_t>(".5", 42), 0);
  EXPECT_EQ(Found<std::int32_t>("2147483648", 42), 2147483647);
  EXPECT_EQ(Found<std::int32_t>("-99999999999999999999", 42), -2147483647 - 1);
  EXPECT_EQ(Found<std::uint32_t>("4294967295", 42), 4294967295u);
  EXPECT_EQ(Found<std::uint32_t>("4294967296", 42), 4294967295u);
  EXPECT_EQ(Found<std::uint32_t>("-1", 42), 4294967295u) << "the stream wraps a negative number round";
}

TEST(StreamValue, BoolsAreNumbers) {
  for (const char* text : {"1", "2", "-1", "99999999999999999999", "1.0", "+1", "01"}) {
    EXPECT_TRUE(Found(text, false)) << text;
  }
  for (const char* text : {"0", "true", "yes", "0.7", "-0", "00"}) EXPECT_FALSE(Found(text, true)) << text;
  EXPECT_TRUE(Found("", true));
  EXPECT_FALSE(Found("", false));
}

// Texts close to numbers: every path of the parser, most of them wrong.
std::string RandomText(std::mt19937& random) {
  constexpr std::string_view kLetters = "00112345678999..--++eeE xanif\t\r,";
  std::string text;
  const auto length = random() % 12;
  for (unsigned i = 0; i < length; ++i) text += kLetters[random() % kLetters.size()];
  return text;
}

template <class Number>
void ExpectLikeStream(const std::string& text, Number before) {
  const Number found = Found(text, before);
  const Number expected = ByStream(text, before);
  ASSERT_EQ(found, expected) << '"' << text << '"';
  if constexpr (std::is_same_v<Number, double>) {
    ASSERT_EQ(std::signbit(found), std::signbit(expected)) << '"' << text << '"';
  }
}

TEST(StreamValue, RandomTextsReadAsTheStreamReadsThem) {
  const unsigned seed = std::random_device{}();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int i = 0; i < 30000; ++i) {
    const std::string text = RandomText(random);
    ASSERT_NO_FATAL_FAILURE(ExpectLikeStream<double>(text, 42));
    ASSERT_NO_FATAL_FAILURE(ExpectLikeStream<std::int32_t>(text, 42));
    ASSERT_NO_FATAL_FAILURE(ExpectLikeStream<std::uint32_t>(text, 42));
    ASSERT_NO_FATAL_FAILURE(ExpectLikeStream<bool>(text, i % 2 == 0));
  }
}

TEST(StreamValue, RandomNumbersReadToTheLastBit) {
  const unsigned seed = std::random_device{}();
  SCOPED_TRACE(seed);
  std::mt19937_64 random(seed);
  for (int i = 0; i < 30000; ++i) {
    const auto value = std::bit_cast<double>(random());
    char text[64];
    std::snprintf(text, sizeof text, i % 2 == 0 ? "%.17g" : "%g", value);
    ASSERT_NO_FATAL_FAILURE(ExpectLikeStream<double>(text, 42));
  }
}

std::string Written(double value) {
  std::string text;
  AppendValue(text, value);
  return text;
}

TEST(StreamValue, WritesSixSignificantDigits) {
  EXPECT_EQ(Written(0), "0");
  EXPECT_EQ(Written(-0.0), "-0");
  EXPECT_EQ(Written(0.1), "0.1");
  EXPECT_EQ(Written(1234567), "1.23457e+06");
  EXPECT_EQ(Written(999999.5), "1e+06");
  EXPECT_EQ(Written(0.0001), "0.0001");
  EXPECT_EQ(Written(0.00001), "1e-05");
  EXPECT_EQ(Written(1e-300), "1e-300");
  EXPECT_EQ(Written(std::numeric_limits<double>::infinity()), "inf");
}

TEST(StreamValue, WritesWhatAStreamInserts) {
  std::mt19937_64 random(20240501);
  for (int i = 0; i < 30000; ++i) {
    const auto value = std::bit_cast<double>(random());
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << value;
    ASSERT_EQ(Written(value), out.str());
  }
}

TEST(StreamValue, WritesIntegersAndBools) {
  std::string text;
  AppendValue(text, std::int32_t{-2147483647 - 1});
  AppendValue(text, std::uint32_t{4294967295u});
  AppendValue(text, true);
  AppendValue(text, false);
  EXPECT_EQ(text, "-2147483648429496729510");
}

}  // namespace
}  // namespace tolvik
