// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/state_file/old_tables.h"

#include <algorithm>
#include <locale>
#include <string>

namespace tolvik {
namespace {

// Limits a count to the records that the rest of the file can hold, so that a hostile count takes no memory;
// a truncated table of the usual size still gets all its records.
constexpr std::size_t kRowsGranted = 1000;

void SkipLines(TextStream& in, int count) {
  std::string line;
  for (int i = 0; i < count; ++i) std::getline(in, line);
}

std::int32_t ReadCount(TextStream& in) {
  std::int32_t count = 0;
  in >> count;
  return std::max(count, 0);
}

std::int32_t Bound(std::int32_t count, const TextStream& in, std::size_t shortest_row) {
  const std::size_t most = std::max(kRowsGranted, in.Remaining() / shortest_row + 1);
  return static_cast<std::int32_t>(std::min(static_cast<std::size_t>(count), most));
}

CLayer ReadLayerRow(TextStream& in) {
  CLayer layer;
  in >> layer.layer_z;
  std::string name;
  char c = 0;
  while (in >> c) name += c;  // runs to the end of the file
  layer.layer_db.Set(name);
  in >> layer.layer_delta >> layer.layer_beta >> layer.layer_ddelta >> layer.layer_dbeta >> layer.layer_sigma;
  return layer;
}

void ReadSpline(TextStream& in, CGaussFunction& function) {
  const std::int32_t count = ReadCount(in);
  double x = 0, y = 0;
  for (std::int32_t i = 0; i < count && in >> x >> y; ++i) {
    function.gauss_splinex.Append(x);
    function.gauss_spliney.Append(y);
  }
}

void ReadGaussRow(TextStream& in, std::int32_t version, CGaussFunction& function) {
  bool dropped = false;
  in >> function.gauss_delta;
  if (version == 3) {
    in >> function.gauss_beta;
  } else {
    function.gauss_beta = function.gauss_delta;
  }
  in >> function.gauss_variance >> function.gauss_z;
  in >> function.gauss_fit >> function.gauss_fita >> function.gauss_fitvar >> function.gauss_fitz;
  if (version != 3) in >> dropped;
  in >> function.gauss_usespline;
  if (version != 1) in >> function.gauss_acoupling >> function.gauss_varcoupling;
  ReadSpline(in, function);
  SkipLines(in, 2);
}

}  // namespace

TextStream::TextStream(std::string_view text) : std::istream(nullptr) {
  char* begin = const_cast<char*>(text.data());  // the buffer only reads
  setg(begin, begin, begin + text.size());
  rdbuf(static_cast<std::streambuf*>(this));
  std::istream::imbue(std::locale::classic());
}

std::size_t TextStream::Remaining() const {
  return good() ? static_cast<std::size_t>(egptr() - gptr()) : 0;
}

void ReadLayerTable(TextStream& in, std::int32_t version, CArray<CLayer>& layers) {
  SkipLines(in, 1);
  const std::int32_t stated = ReadCount(in);
  SkipLines(in, version == 1 ? 3 : 4);
  const std::int32_t rows = Bound(stated, in, sizeof("0 a 0 0 0 0 0"));
  for (std::int32_t i = 0; i < rows; ++i) layers.Append(ReadLayerRow(in));
  SkipLines(in, 2);
  std::int32_t dropped = 0;
  for (std::int32_t i = 0; version == 1 && i < rows && in >> dropped; ++i) {
  }
}

void ReadGaussTable(TextStream& in, std::int32_t version, CArray<CGaussFunction>& functions) {
  SkipLines(in, 1);
  const std::int32_t stated = ReadCount(in);
  SkipLines(in, 6);
  functions.Assign(Bound(stated, in, sizeof("0 0 0 0 0 0 0 0 0 0")), CGaussFunction());
  for (CGaussFunction& function : functions) ReadGaussRow(in, version, function);
}

void ReadMeasurementTable(TextStream& in, CDataset& dataset) {
  SkipLines(in, 1);
  const std::int32_t stated = ReadCount(in);
  SkipLines(in, 2);
  const std::int32_t points = Bound(stated, in, sizeof("0 0 0"));
  dataset.dataset_qz.Assign(points, 0);
  dataset.dataset_R0.Assign(points, 0);
  dataset.dataset_A.Assign(points, 0);
  for (std::int32_t i = 0; i < points && in.good(); ++i) {
    in >> dataset.dataset_qz[i] >> dataset.dataset_R0[i] >> dataset.dataset_A[i];
  }
}

}  // namespace tolvik
