// SPDX-License-Identifier: GPL-2.0-or-later
// Where each kind of record stands in a state.
#pragma once

#include "sequence.h"

namespace tolvik::python {

/// A list that the state itself holds.
template <class Record, CArray<Record> CState::*kMember, Block kOfBlock>
struct StateHome {
  static constexpr Block kBlock = kOfBlock;
  static CArray<Record>& Of(StateBox& box, std::int32_t) { return box.state.*kMember; }
};

template <>
struct Home<CLayer> : StateHome<CLayer, &CState::layers, Block::kLayers> {};
template <>
struct Home<CElementLayer> : StateHome<CElementLayer, &CState::elementlayers, Block::kElementLayers> {};
template <>
struct Home<CGaussFunction> : StateHome<CGaussFunction, &CState::gaussfunctions, Block::kGaussFunctions> {};
template <>
struct Home<CFitVariable> : StateHome<CFitVariable, &CState::fitvariables, Block::kFitVariables> {};
template <>
struct Home<CDataset> : StateHome<CDataset, &CState::datasets, Block::kDatasets> {};

template <>
struct Home<CElementSlice> {
  static constexpr Block kBlock = Block::kElementLayers;
  static CArray<CElementSlice>& Of(StateBox& box, std::int32_t parent) {
    return Item<CElementLayer>{{box.shared_from_this()}, parent}.get().slices;
  }
};

}  // namespace tolvik::python
