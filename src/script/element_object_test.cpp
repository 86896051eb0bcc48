// SPDX-License-Identifier: GPL-2.0-or-later
#include <gtest/gtest.h>

#include <lua.hpp>
#include <string>
#include <thread>

#include "script/host.h"
#include "support/script_host.h"

namespace tolvik {
namespace {

// Two elements, Fe with two slices and O with none.
class ElementType : public testing::ScriptHost {
 protected:
  ElementType() {
    for (const char* name : {"Fe", "O"}) {
      CElementLayer element;
      element.element = name;
      element.el_f1 = 26;
      element.el_f2 = 3;
      state_.elementlayers.Append(element);
    }
    CElementSlice slice;
    slice.el_d = 10;
    slice.el_sigma = 2;
    state_.elementlayers[0].slices.Append(slice);
    state_.elementlayers[0].slices.Append(slice);
    Start();
  }
};

TEST_F(ElementType, ReachesScatteringFactorsAndSlices) {
  EXPECT_EQ(Try("assert(Fe:getf1() == 26 and Fe:getf2() == 3)"), "");
  EXPECT_EQ(Try("assert(Fe:getthickness(1) == 10 and Fe:getsigma(0) == 2)"), "");
  EXPECT_EQ(Try("Fe:setf1(27); O:setf2(4); Fe:setthickness(1, 12.5); Fe:setsigma(0, 3.5)"), "");
  EXPECT_EQ(state_.elementlayers[0].el_f1, 27);
  EXPECT_EQ(state_.elementlayers[1].el_f2, 4);
  EXPECT_EQ(state_.elementlayers[0].slices[1].el_d, 12.5);
  EXPECT_EQ(state_.elementlayers[0].slices[0].el_sigma, 3.5);
}

TEST_F(ElementType, IndexesAreTruncated) {
  EXPECT_EQ(Try("e = element.new(1.9); e:setf1(5); Fe:setsigma(1.99, 6); Fe:setsigma(-0.5, 7)"), "");
  EXPECT_EQ(state_.elementlayers[1].el_f1, 5);
  EXPECT_EQ(state_.elementlayers[0].slices[1].el_sigma, 6);
  EXPECT_EQ(state_.elementlayers[0].slices[0].el_sigma, 7);
}

TEST_F(ElementType, IndexesOutsideTheRecordAreErrors) {
  for (const char* index : {"2", "-1", "1e300", "-1e300", "0/0", "2^31", "1/0"}) {
    EXPECT_TRUE(IsOutOfRange(std::string("element.new(") + index + "):getf1()")) << index;
    EXPECT_TRUE(IsOutOfRange(std::string("element.new(") + index + "):setf2(1)")) << index;
    EXPECT_TRUE(IsOutOfRange(std::string("Fe:getsigma(") + index + ")")) << index;
    EXPECT_TRUE(IsOutOfRange(std::string("Fe:setthickness(") + index + ", 1)")) << index;
  }
  EXPECT_TRUE(IsOutOfRange("O:getsigma(0)"));
}

TEST_F(ElementType, WrongTypesAreArgumentErrors) {
  for (const char* text : {"element.getf1({})", "element.getf1(delta)", "Fe.getf1()", "Fe:setf1('x')",
                           "Fe:setsigma(0)", "Fe:getsigma()", "element.new()", "element.new('x')",
                           "element.getf1(io.stdout)", "Fe:set(1)", "Fe.f1 = 3"}) {
    EXPECT_NE(Try(text), "") << text;
  }
  EXPECT_NE(Try("u = newproxy(); debug.setmetatable(u, element); u:getf1()"), "");
}

TEST_F(ElementType, TableIsItsOwnIndex) {
  EXPECT_EQ(Try("assert(element.__index == element and getmetatable(Fe) == element)"), "");
}

TEST_F(ElementType, SharedValueIsOneForTheProgram) {
  EXPECT_EQ(Try("Fe:set('any key', 5.5); assert(O:get() == 5.5 and O:get('other') == 5.5)"), "");
  CState other;
  other.scriptlines.Append("thickness[0] = element.get(); element.set(nil, nil, 3.14)");
  std::thread([&other] { ScriptSession(other).Run(); }).join();
  EXPECT_EQ(other.layers[0].layer_d, 5.5);  // survives from host to host
  EXPECT_EQ(Try("assert(Fe:get() == 3.14)"), "");
}

}  // namespace
}  // namespace tolvik
