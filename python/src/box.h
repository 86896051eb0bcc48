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
enum class Block { kLayers, kElementLayers, kGaussFunctions, kFitVariables, kDatasets, kScriptParameters };
inline constexpr std::array<const char*, 6> kBlockNames = {
    "layers", "elementlayers", "gaussfunctions", "fitvariables", "datasets", "scriptparameters"};

/// The numbers of a layer from which its tensor and the heights follow.
struct LayerStamp {
  double d, delta, beta, ddelta, dbeta;
};

/// A state shared by the objects of Python that show parts of it. All members are used with the GIL held.
///
/// The tensors and heights of the layers follow from other members, which Python writes silently. They
/// are brought up to date where they are read: of those layers whose numbers differ from the stamps, so that
/// tensors from a table stay.
class StateBox : public std::enable_shared_from_this<StateBox> {
 public:
  StateBox();
  explicit StateBox(CState given);

  CState state;
  std::array<std::int32_t, kBlockNames.size()> views{};  ///< living views by Block

  /// Rebuilds the tensors and heights whose numbers have changed since.
  void Refresh();
  /// Takes the tensors and heights as they are for right.
  void Settle();
  /// Brings the derived members up to date after a change of a list. layer: the one whose tensor is to be
  /// built, -1 for none. Does nothing for other blocks than the layers.
  void Restack(std::int32_t layer, Block block);
  /// Raises BufferError while a view shows that block.
  void RequireMovable(Block block) const;
  void RequireAllMovable() const;

 private:
  void StackHeights();

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
