// SPDX-License-Identifier: GPL-2.0-or-later
#include "script/fields.h"

#include <cstddef>
#include <iterator>

#include "model/find.h"

namespace tolvik {
namespace {

using enum ArrayLength;

template <auto list, auto member>
double* OfState(CScriptPointer& host, std::int32_t index) {
  return Find(host.state->*list, index, member);
}

template <auto curve>
double* OfSolution(CScriptPointer& host, std::int32_t index) {
  return Find(host.solution.*curve, index);
}

double* OfParameters(CScriptPointer& host, std::int32_t index) {
  return Find(host.state->scriptparameters, index);
}

constexpr int kReal = 0, kImaginary = 1;

template <int row, int column, int part>
double* OfTensor(CScriptPointer& host, std::int32_t index) {
  CLayer* layer = Find(host.state->layers, index);
  // a complex number is its two parts, side by side
  return layer != nullptr ? reinterpret_cast<double*>(&layer->Epsilon(row, column)) + part : nullptr;
}

template <auto member>
constexpr auto OfLayers = &OfState<&CState::layers, member>;
template <auto member>
constexpr auto OfGauss = &OfState<&CState::gaussfunctions, member>;
template <auto member>
constexpr auto OfElements = &OfState<&CState::elementlayers, member>;

constexpr ScriptField kFields[] = {
    {"delta", 0, kLayers, OfLayers<&CLayer::layer_delta>},
    {"beta", 1, kLayers, OfLayers<&CLayer::layer_beta>},
    {"sigma", 2, kLayers, OfLayers<&CLayer::layer_sigma>},
    {"thickness", 3, kLayers, OfLayers<&CLayer::layer_d>},
    {"deltam", 4, kLayers, OfLayers<&CLayer::layer_ddelta>},
    {"betam", 5, kLayers, OfLayers<&CLayer::layer_dbeta>},
    {"solution_qz", 6, kSolution, OfSolution<&CSolution::dataset_qz>},
    {"solution_R", 7, kSolution, OfSolution<&CSolution::dataset_R0>},
    {"solution_Rp", 8, kSolution, OfSolution<&CSolution::dataset_Rp>},
    {"solution_Rm", 9, kSolution, OfSolution<&CSolution::dataset_Rm>},
    {"solution_energy", 10, kSolution, OfSolution<&CSolution::dataset_eng>},
    {"gauss_delta", 11, kGaussFunctions, OfGauss<&CGaussFunction::gauss_delta>},
    {"gauss_beta", 12, kGaussFunctions, OfGauss<&CGaussFunction::gauss_beta>},
    {"gauss_variance", 13, kGaussFunctions, OfGauss<&CGaussFunction::gauss_variance>},
    {"gauss_z", 14, kGaussFunctions, OfGauss<&CGaussFunction::gauss_z>},
    {"exx_r", 15, kLayers, OfTensor<0, 0, kReal>, true},
    {"exy_r", 16, kLayers, OfTensor<0, 1, kReal>, true},
    {"exz_r", 17, kLayers, OfTensor<0, 2, kReal>, true},
    {"eyx_r", 18, kLayers, OfTensor<1, 0, kReal>, true},
    {"eyy_r", 19, kLayers, OfTensor<1, 1, kReal>, true},
    {"eyz_r", 20, kLayers, OfTensor<1, 2, kReal>, true},
    {"ezx_r", 21, kLayers, OfTensor<2, 0, kReal>, true},
    {"ezy_r", 22, kLayers, OfTensor<2, 1, kReal>, true},
    {"ezz_r", 23, kLayers, OfTensor<2, 2, kReal>, true},
    {"exx_i", 25, kLayers, OfTensor<0, 0, kImaginary>, true},
    {"exy_i", 26, kLayers, OfTensor<0, 1, kImaginary>, true},
    {"exz_i", 27, kLayers, OfTensor<0, 2, kImaginary>, true},
    {"eyx_i", 28, kLayers, OfTensor<1, 0, kImaginary>, true},
    {"eyy_i", 29, kLayers, OfTensor<1, 1, kImaginary>, true},
    {"eyz_i", 30, kLayers, OfTensor<1, 2, kImaginary>, true},
    {"ezx_i", 31, kLayers, OfTensor<2, 0, kImaginary>, true},
    {"ezy_i", 32, kLayers, OfTensor<2, 1, kImaginary>, true},
    {"ezz_i", 33, kLayers, OfTensor<2, 2, kImaginary>, true},
    {"par", 34, kParameters, OfParameters},
    {"f1", 35, kElements, OfElements<&CElementLayer::el_f1>},
    {"f2", 36, kElements, OfElements<&CElementLayer::el_f2>},
};

// The codes count the rows, except for one code without a field.
constexpr std::int32_t kUnusedCode = 24;

constexpr std::size_t RowOf(std::int32_t code) {
  return static_cast<std::size_t>(code < kUnusedCode ? code : code - 1);
}

constexpr bool AreInTheRowsOfTheirCodes() {
  for (std::size_t row = 0; row < std::size(kFields); ++row) {
    if (kFields[row].code == kUnusedCode || RowOf(kFields[row].code) != row) return false;
  }
  return true;
}
static_assert(AreInTheRowsOfTheirCodes());

}  // namespace

std::span<const ScriptField> ScriptFields() {
  return kFields;
}

const ScriptField* FindScriptField(std::int32_t code) {
  if (code < 0 || code == kUnusedCode || RowOf(code) >= std::size(kFields)) return nullptr;
  return &kFields[RowOf(code)];
}

std::int32_t HighestIndex(ArrayLength length, const CState& state) {
  switch (length) {
    case kLayers:
      return state.layers.size - 1;
    case kGaussFunctions:
      return state.gaussfunctions.size - 1;
    case kParameters:
      return state.scriptparameters.size - 1;
    case kElements:
      return state.elementlayers.size - 1;
    case kSolution:
      break;
  }
  return -1;
}

}  // namespace tolvik
