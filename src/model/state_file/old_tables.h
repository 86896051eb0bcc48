// SPDX-License-Identifier: GPL-2.0-or-later
// The tables of old state files: layers, gauss functions and one measurement as columns without keys.
//
// A table is read token by token across line ends. The first token that does not fit fails the stream, and
// the rest of the file is lost: later records keep their defaults.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <streambuf>
#include <string_view>

#include "tolvik/state.h"

namespace tolvik {

/// A stream in the "C" locale over a text that must outlive it.
class TextStream : private std::streambuf, public std::istream {
 public:
  explicit TextStream(std::string_view text);

  /// Characters not read yet; 0 once the stream has failed or reached the end.
  std::size_t Remaining() const;
};

/// Table of layerversion 1 or 2: appends a layer for each row. The name of the first row takes the rest of
/// the file without its white space, so the other rows have neither name nor numbers.
void ReadLayerTable(TextStream& in, std::int32_t version, CArray<CLayer>& layers);

/// Table of magneticversion 1, 2 or 3: replaces the functions.
void ReadGaussTable(TextStream& in, std::int32_t version, CArray<CGaussFunction>& functions);

/// Table of measurementdataversion 1: fills dataset_qz, dataset_R0 and dataset_A.
void ReadMeasurementTable(TextStream& in, CDataset& dataset);

}  // namespace tolvik
