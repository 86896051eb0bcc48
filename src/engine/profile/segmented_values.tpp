// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "engine/profile/segmented_values.h"
#include "optics/table_erf.h"

namespace tolvik::engine {
namespace segmented {

// erf(x/√2) by the table.
template <class T>
T StepFunction(const T& x) {
  return T(TableErf(static_cast<double>(x * T(0.7071067811865475))));
}

template <class T>
T Roughness(const CLayer<T>& layer) {
  return layer.layer_sigma == T(0.0) ? T(1e-10) : layer.layer_sigma;
}

// -1 far below the upper interface of an entry, 1 far above it.
template <class T>
T SideOfInterface(const CLayer<T>& layer, const T& z) {
  return StepFunction<T>((z - layer.layer_z) / Roughness(layer));
}

// Share of a layer between the sides of its lower and its upper interface.
template <class T>
T LayerShare(const T& bottom, const T& top) {
  return T(0.25) * (T(1.0) + bottom) * (T(1.0) - top);
}

template <class T>
void ToRow(const CLayer<T>& layer, T* row) {
  row[0] = layer.layer_delta;
  row[1] = layer.layer_beta;
  row[2] = layer.layer_ddelta;
  row[3] = layer.layer_dbeta;
  for (int k = 0; k < 9; ++k) {
    row[4 + 2 * k] = layer.epsilon[k].real();
    row[5 + 2 * k] = layer.epsilon[k].imag();
  }
}

template <class T>
void FromRow(const T* row, CLayer<T>& layer) {
  layer.layer_delta = row[0];
  layer.layer_beta = row[1];
  layer.layer_ddelta = row[2];
  layer.layer_dbeta = row[3];
  for (int k = 0; k < 9; ++k) layer.epsilon[k] = Cplx<T>(row[4 + 2 * k], row[5 + 2 * k]);
}

}  // namespace segmented

template <class T>
T LayerWeight(const Profile<T>& profile, std::int32_t index, const T& z) {
  const T bottom = index == 0 ? T(TableErf(static_cast<double>((z + T(1e10)) * T(0.7071067811865475))))
                              : segmented::SideOfInterface(profile[index - 1], z);
  const T top = index == profile.size - 1 && index > 0
                    ? T(TableErf(static_cast<double>((z - T(1e10)) * T(0.7071067811865475))))
                    : segmented::SideOfInterface(profile[index], z);
  return segmented::LayerShare(bottom, top);
}

template <class T>
ProfileSampler<T>::ProfileSampler(const Profile<T>& profile, std::int32_t model)
    : profile_(profile), model_(model) {
  const std::int32_t n = profile.size;
  rows_.Assign(n * kFields, T());
  near_.Assign(n, Term());
  terms_.Assign(n, Term());
  for (std::int32_t i = 0; i < n; ++i) segmented::ToRow<T>(profile[i], rows_.data + i * kFields);
  skip_zeros_ = true;
  for (const T& value : rows_) skip_zeros_ = skip_zeros_ && isfinite(value);
  if (model == SegmentationModel::kProductOfInterfaces || model == SegmentationModel::kLayerWeights) return;
  for (std::int32_t k = 0; k < (n - 1) * kFields; ++k) rows_[k] = T(0.5) * (rows_[k] - rows_[k + kFields]);
}

template <class T>
void ProfileSampler<T>::AddTerm(const T& weight, std::int32_t row) {
  if (skip_zeros_ && weight == T(0.0)) return;
  terms_[count_++] = {weight, row};
}

template <class T>
void ProfileSampler<T>::CalcStepTerms(const T& z) {
  for (std::int32_t j = 0; j + 1 < profile_.size; ++j) {
    const T below = segmented::StepFunction<T>((profile_[j].layer_z - z) / segmented::Roughness(profile_[j]));
    AddTerm(T(1.0) + below, j);
  }
}

// A factor of exactly 1 changes nothing and one of exactly 0 removes an entry, so the products run over the
// few interfaces near z only.
template <class T>
void ProfileSampler<T>::CalcProductWeights(const T& z) {
  const std::int32_t n = profile_.size;
  const T* floor = nullptr;    // highest interface far below z: entries must lie above it
  const T* ceiling = nullptr;  // lowest interface far above z: entries must not lie above it
  std::int32_t near = 0;
  for (std::int32_t j = 0; j + 1 < n; ++j) {
    const T& height = profile_[j].layer_z;
    const T side = segmented::SideOfInterface(profile_[j], z);
    if (side == T(1.0)) {
      if (floor == nullptr || height > *floor) floor = &height;
    } else if (side == T(-1.0) && !isnan(height)) {
      if (ceiling == nullptr || height < *ceiling) ceiling = &height;
    } else if (side != T(-1.0)) {
      near_[near++] = {side, j};
    }
  }
  for (std::int32_t i = 0; i < n; ++i) {
    const T& height = profile_[i].layer_z;
    const bool apart = (floor != nullptr && !(height > *floor)) || (ceiling != nullptr && height > *ceiling);
    T weight = apart ? T(0.0) : T(1.0);
    for (std::int32_t k = 0; k < near && !apart; ++k) {
      weight *= T(0.5) * (height > profile_[near_[k].row].layer_z ? T(1.0) + near_[k].weight
                                                                  : T(1.0) - near_[k].weight);
    }
    total_ += weight;
    AddTerm(weight, i);
  }
}

template <class T>
void ProfileSampler<T>::CalcLayerWeights(const T& z) {
  const std::int32_t top = profile_.size - 1;
  T below(0.0);
  for (std::int32_t i = 0; i <= top; ++i) {
    const bool inner = i > 0 && i < top;
    const T above = i < top ? segmented::SideOfInterface(profile_[i], z) : T(0.0);
    const T weight = inner ? segmented::LayerShare(below, above) : LayerWeight(profile_, i, z);
    below = above;
    total_ += weight;
    AddTerm(weight, i);
  }
}

template <class T>
void ProfileSampler<T>::CalcTerms(const T& z) {
  count_ = 0;
  total_ = T(0.0);
  if (model_ == SegmentationModel::kProductOfInterfaces) return CalcProductWeights(z);
  if (model_ == SegmentationModel::kLayerWeights) return CalcLayerWeights(z);
  CalcStepTerms(z);
}

template <class T>
void ProfileSampler<T>::Sum(int fields, T* values) const {
  const bool steps =
      model_ != SegmentationModel::kProductOfInterfaces && model_ != SegmentationModel::kLayerWeights;
  const T* ambient = rows_.data + (rows_.size - kFields);
  for (int f = 0; f < fields; ++f) values[f] = steps && rows_.size > 0 ? ambient[f] : T(0.0);
  for (std::int32_t k = 0; k < count_; ++k) {
    const T* row = rows_.data + terms_[k].row * kFields;
    for (int f = 0; f < fields; ++f) values[f] += row[f] * terms_[k].weight;
  }
  if (steps || total_ == T(0.0)) return;
  for (int f = 0; f < fields; ++f) values[f] = values[f] / total_;
}

template <class T>
void ProfileSampler<T>::CalcConstants(const T& z, Constants& constants) {
  CalcTerms(z);
  Sum(4, constants);
}

template <class T>
void ProfileSampler<T>::Fill(const T& z, CLayer<T>& entry) {
  T values[kFields];
  CalcTerms(z);
  Sum(kFields, values);
  segmented::FromRow<T>(values, entry);
  entry.layer_z = z;
  entry.layer_sigma = T(0.0);
}

template <class T>
void CalcSegmentedValues(const Profile<T>& profile, std::int32_t model, const T& z, CLayer<T>& entry) {
  ProfileSampler<T>(profile, model).Fill(z, entry);
}

}  // namespace tolvik::engine
