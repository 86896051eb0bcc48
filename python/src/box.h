// SPDX-License-Identifier: GPL-2.0-or-later
// A state as Python holds it: the records, the number of views into each of its blocks, and what its derived
// members were built from.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "tolvik/state.h"

namespace tolvik::python {

/// The lists of a state whose memory a view may show.
enum class Block { kLayers, kElementLayers, kGaussFunctions, kFitVariables, kDatasets };
inline constexpr std::array<const char*, 5> kBlockNames = {"layers", "elementlayers", "gaussfunctions",
                                                           "fitvariables", "datasets"};

/// The numbers of a layer from which its tensor and the heights follow.
struct LayerStamp {
  double d, delta, beta, ddelta, dbeta;
};

/// A state shared by the objects of Python that show parts of it. All members are used with the GIL held.
///
/// The tensors and heights of the layers follow from other members, which Python writes silently. They
/// are brought up to date where they are read: of those layers whose numbers differ from the stamps, so that
/// tensors from a table stay.
class StateBox {
 public:
  StateBox();
  explicit StateBox(CState given);

  CState state;
  std::array<std::int32_t, kBlockNames.size()> views{};  ///< living views by Block

  /// Rebuilds the tensors and heights whose numbers have changed since.
  void Refresh();
  /// Takes the tensors and heights as they are for right.
  void Settle();
  /// Raises BufferError while a view shows that block.
  void RequireMovable(Block block) const;
  void RequireAllMovable() const;

 private:
  std::vector<LayerStamp> stamps_;
  double gamma_ = 0, phi_ = 0;
  std::int32_t mode_ = 0;
};

using Shared = std::shared_ptr<StateBox>;

/// The object State of Python.
struct PyState {
  Shared box;
  CState& get() const { return box->state; }
};

}  // namespace tolvik::python
