// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/status.h"

#include <gtest/gtest.h>

namespace tolvik {
namespace {

TEST(StatusMessage, WordsEachCode) {
  EXPECT_STREQ(StatusMessage(1), "");
  EXPECT_STREQ(StatusMessage(2),
               "Error: Wrong data points in measurement. Please remove all data points that fulfill the "
               "condition qz/2/k0 > 1.");
  EXPECT_STREQ(StatusMessage(3), "Error: Script Compilation");
  EXPECT_STREQ(StatusMessage(4), "Error: Script Execution");
  EXPECT_STREQ(StatusMessage(5), "Error: Unknown Error");
}

TEST(StatusMessage, TheRowBehindTheEndIsNeverReached) {
  EXPECT_STREQ(StatusMessage(6), "");
  EXPECT_STREQ(StatusMessage(0), "");
  EXPECT_STREQ(StatusMessage(-1), "");
}

}  // namespace
}  // namespace tolvik
