// SPDX-License-Identifier: GPL-2.0-or-later
#include "analysis/snapshot.h"

#include <numbers>

#include "engine/curve/finish.h"
#include "engine/curve/grazing.h"

namespace tolvik::analysis {
namespace {

NodeKey NodeKeyOf(const CurveModel& model) {
  const CState& state = model.state();
  NodeKey key;
  key.lambda = state.lambda;
  key.resolution = model.prepared().HasPlan() ? 0 : state.resolution;
  key.q_shift = model.measured().datasetqztranslation;
  key.offset = model.quantities().offset;
  if (model.FollowsEdges()) key.edges = CriticalEdges(state, model.prepared().edge_layers);
  return key;
}

ScaleKey ScaleKeyOf(const CurveModel& model) {
  const CDataset& dataset = model.state().datasets[model.prepared().dataset];
  return {model.quantities(), dataset.datasetmultiplicator, dataset.datasettranslator};
}

void TakeNodes(CurveModel& model, Snapshot& snapshot) {
  const CDataset& measured = model.measured();
  const auto rule = engine::UniformRules<double>{engine::RuleOfResolution<double>(model.state().resolution)};
  const engine::PointRules* rules = model.RulesFor(model.state());
  for (std::int32_t i = 0; i < measured.dataset_qz.size; ++i) {
    const double q = measured.dataset_qz[i] + measured.datasetqztranslation;
    const engine::PointRule<double> own = rules != nullptr ? rules->At(i) : rule.At(i);
    for (std::int32_t k = 0; k < own.samples; ++k) {
      snapshot.sine.push_back(engine::GrazingSine(own.shift[k] + q, snapshot.stage.k0));
      snapshot.weight.push_back(own.weight[k]);
    }
    snapshot.end.push_back(static_cast<std::int32_t>(snapshot.sine.size()));
  }
}

// The factors of R in the last step of a curve, if any.
void FinishFactors(const CurveModel& model, Snapshot& snapshot) {
  const CState& state = model.state();
  if (state.mulqz4 == 0 && state.polcorrection == 0) return;
  CSolution ones = model.measured();
  for (double& q : ones.dataset_qz) q += ones.datasetqztranslation;
  ones.dataset_Rp.Assign(ones.dataset_qz.size, 1.0);
  ones.dataset_Rm.Assign(ones.dataset_qz.size, 1.0);
  ones.dataset_A.Clear();
  engine::FinishSolution(ones, state.mulqz4, state.polcorrection, 0);
  for (std::int32_t i = 0; i < ones.dataset_qz.size; ++i) {
    snapshot.factor[0][static_cast<std::size_t>(i)] *= ones.dataset_Rp[i];
    snapshot.factor[1][static_cast<std::size_t>(i)] *= ones.dataset_Rm[i];
  }
}

void TakeFactors(const CurveModel& model, Snapshot& snapshot) {
  const Measurement& source = model.prepared().source;
  const std::size_t points = model.prepared().q.size();
  const bool asymmetry = IsAsymmetry(source.kind);
  const double scale = asymmetry ? 1 : snapshot.scale_key.quantities.scale / snapshot.scale_key.multiplicator;
  for (auto& factor : snapshot.factor) factor.assign(points, scale);
  if (source.footprint.shape != BeamShape::kNone && !asymmetry) {
    const QuantityValues& values = snapshot.scale_key.quantities;
    for (std::size_t i = 0; i < points; ++i) {
      const double share =
          FootprintShare(source.footprint.shape, values.beam_width, values.sample_length, model.SineOf(i));
      for (auto& factor : snapshot.factor) factor[i] *= share;
    }
  }
  FinishFactors(model, snapshot);
}

}  // namespace

bool TakeSnapshot(CurveModel& model, std::span<const double> x, const Snapshot* before, Snapshot& snapshot) {
  model.Apply(x);
  if (!model.SetStage(snapshot.stage)) return false;
  snapshot.node_key = NodeKeyOf(model);
  snapshot.scale_key = ScaleKeyOf(model);
  snapshot.sine.clear();
  snapshot.weight.clear();
  snapshot.end.clear();
  for (auto& factor : snapshot.factor) factor.clear();
  const bool asymmetry = IsAsymmetry(model.prepared().source.kind);
  snapshot.constant =
      snapshot.scale_key.quantities.background - (asymmetry ? 0 : snapshot.scale_key.translator);
  const bool nodes_moved = before == nullptr || !(snapshot.node_key == before->node_key);
  if (nodes_moved) TakeNodes(model, snapshot);
  if (nodes_moved || !(snapshot.scale_key == before->scale_key)) TakeFactors(model, snapshot);
  return true;
}

}  // namespace tolvik::analysis
