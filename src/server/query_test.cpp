// SPDX-License-Identifier: GPL-2.0-or-later
#include "server/query.h"

#include <gtest/gtest.h>

namespace tolvik {
namespace {

using Tokens = std::vector<std::string>;

TEST(SplitQuery, DropsThePathAndSplitsAtAmpersands) {
  EXPECT_EQ(SplitQuery("page?qz=0.2&energy=700 HTTP/1.0"), (Tokens{"qz=0.2", "energy=700"}));
  EXPECT_EQ(SplitQuery("&a"), (Tokens{"a"}));
  EXPECT_EQ(SplitQuery("qz=0.2 HTTP/1.0"), Tokens{});
  EXPECT_EQ(SplitQuery(""), Tokens{});
}

TEST(SplitQuery, KeepsEmptyTokens) {
  EXPECT_EQ(SplitQuery("?"), (Tokens{""}));
  EXPECT_EQ(SplitQuery("?a&&b"), (Tokens{"a", "", "b"}));
}

TEST(SplitQuery, ALaterQuestionMarkEndsAToken) {
  EXPECT_EQ(SplitQuery("?qz=1?energy=2"), (Tokens{"qz=1?", "energy=2"}));
}

TEST(SplitQuery, EndsAtABlankOrAZeroByte) {
  EXPECT_EQ(SplitQuery("?a b&c"), (Tokens{"a"}));
  EXPECT_EQ(SplitQuery(std::string_view("?a\0&c", 5)), (Tokens{"a"}));
}

PageQuery Read(std::string_view request) {
  PageQuery query{0.1, 800, 5e-5};
  ReadQuery(request, query);
  return query;
}

TEST(ReadQuery, ReadsTheThreeKeys) {
  const PageQuery query = Read("GET /?qz=0.2&energy=700&epsilon=1e-3 HTTP/1.0");
  EXPECT_EQ(query.qz, 0.2);
  EXPECT_EQ(query.energy, 700);
  EXPECT_EQ(query.epsilon, 1e-3);
}

TEST(ReadQuery, NeedsAQuestionMarkAndAGet) {
  EXPECT_EQ(Read("GET /qz=0.2 HTTP/1.0").qz, 0.1);
  EXPECT_EQ(Read("POST /?qz=0.2 HTTP/1.0").qz, 0.1);
  EXPECT_EQ(Read("GET").qz, 0.1);
  EXPECT_EQ(Read("").qz, 0.1);
}

TEST(ReadQuery, IgnoresOtherKeysAndTakesTheLast) {
  const PageQuery query = Read("GET /any/path?Qz=3&qzz=4&qz=0.3&qz=0.4 HTTP/1.1");
  EXPECT_EQ(query.qz, 0.4);
  EXPECT_EQ(query.energy, 800);
}

TEST(ReadQuery, WhatIsNoNumberIsZeroAndNothingStays) {
  EXPECT_EQ(Read("GET /?qz=abc ").qz, 0);
  EXPECT_EQ(Read("GET /?qz= ").qz, 0.1);
  EXPECT_EQ(Read("GET /?qz=0%2E5 ").qz, 0);  // no percent decoding
  EXPECT_EQ(Read("GET /?qz=0.25x ").qz, 0.25);
}

}  // namespace
}  // namespace tolvik
