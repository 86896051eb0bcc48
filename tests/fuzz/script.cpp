// SPDX-License-Identifier: GPL-2.0-or-later
// Fuzzes the calls of a script to `array` and `element`: the input chooses calls and numbers, never text,
// since a script as such may do anything. Under the address sanitizer no call may leave a record.
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include "script/host.h"

namespace {

using namespace tolvik;

class Choices {
 public:
  Choices(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}
  bool AtEnd() const { return at_ == end_; }
  std::uint8_t Take() { return AtEnd() ? std::uint8_t{0} : *at_++; }

 private:
  const std::uint8_t* at_;
  const std::uint8_t* end_;
};

const char* Number(std::uint8_t choice) {
  static const char* const numbers[] = {
      "0",   "1",    "2",   "-1",         "3",           "24",   "36",   "37",     "0.5",
      "1/0", "-1/0", "0/0", "2147483647", "-2147483648", "2^32", "2^63", "1e300",  "'2'",
      "'x'", "nil",  "{}",  "15",         "33",          "34",   "-0.5", "1000000"};
  return numbers[choice % std::size(numbers)];
}

const char* Object(std::uint8_t choice) {
  static const char* const objects[] = {
      "delta", "sigma", "solution_qz", "gauss_z", "exx_r", "ezz_i",   "par", "f1",
      "a",     "a",     "Fe",          "e",       "array", "element", "nil", "CScriptPointer"};
  return objects[choice % std::size(objects)];
}

// One statement that may raise an error.
std::string Statement(Choices& input) {
  static const char* const forms[] = {"a = array.new(%2, %3)",
                                      "x = array.get(%1, %2)",
                                      "array.set(%1, %2, %3)",
                                      "x = %1[%2]",
                                      "%1[%2] = %3",
                                      "x = array.size(%1)",
                                      "e = element.new(%2)",
                                      "x = element.getf1(%1)",
                                      "element.setf2(%1, %2)",
                                      "x = element.getsigma(%1, %2)",
                                      "element.setthickness(%1, %2, %3)"};
  const char* form = forms[input.Take() % std::size(forms)];
  const char* object = Object(input.Take());
  const char* first = Number(input.Take());
  const char* second = Number(input.Take());
  std::string statement;
  for (const char* c = form; *c != '\0'; ++c) {
    if (*c != '%') {
      statement += *c;
      continue;
    }
    statement += c[1] == '1' ? object : c[1] == '2' ? first : second;
    ++c;
  }
  return "pcall(function() " + statement + " end)";
}

CState MakeState(std::uint8_t layers) {
  CState state;
  state.layers.Clear();
  while (state.layers.size < layers % 4) state.layers.Append(CLayer());
  state.gaussfunctions.Append(CGaussFunction());
  state.scriptparameters.Append(1.0);
  CElementLayer iron;
  iron.element = "Fe";
  iron.slices.Append(CElementSlice());
  state.elementlayers.Append(iron);
  state.lambda = 1;
  return state;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Choices input(data, size);
  CState state = MakeState(input.Take());
  while (!input.AtEnd() && state.scriptlines.size < 100)
    state.scriptlines.Append(std::string_view(Statement(input)));
  ScriptSession session(state);
  session.Run();
  session.Run();
  return 0;
}
