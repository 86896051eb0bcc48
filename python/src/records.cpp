// SPDX-License-Identifier: GPL-2.0-or-later
// The lists of a state, their records, and what is special to each.
#include "homes.h"
#include "parts.h"

namespace tolvik::python {
namespace {

/// Curves of a measurement and points of a spline: attributes that are arrays on the memory of the record.
template <class Record>
void DefineArrays(py::class_<Item<Record>>& cls, std::span<const keys::ArrayKey<Record>> list) {
  for (const auto& key : list) {
    const auto member = key.field;
    const auto get = [member](const Item<Record>& self) {
      return ArrayView(self.get().*member, ViewToken(self.owner.box, Home<Record>::kBlock));
    };
    const auto set = [member](const Item<Record>& self, const py::object& values) {
      AssignArray(self.get().*member, values, *self.owner.box, Home<Record>::kBlock);
    };
    cls.def_property(std::string(keys::Name(key.start)).c_str(), get, set, std::string(key.meaning).c_str());
  }
}

/// A derived number of the layers, brought up to date and then shown.
template <class Number>
py::array DerivedColumn(const Sequence<CLayer>& self, Number CLayer::*member) {
  self.box->Refresh();
  CArray<CLayer>& layers = self.list();
  return StridedView(layers.IsEmpty() ? nullptr : &(layers[0].*member), layers.size, sizeof(CLayer),
                     ViewToken(self.box, Block::kLayers));
}

py::array Tensors(const Sequence<CLayer>& self) {
  self.box->Refresh();
  CArray<CLayer>& layers = self.list();
  static std::complex<double> nothing[16];
  constexpr py::ssize_t kElement = sizeof(std::complex<double>);
  return py::array(py::dtype::of<std::complex<double>>(),
                   {py::ssize_t{layers.size}, py::ssize_t{4}, py::ssize_t{4}},
                   {static_cast<py::ssize_t>(sizeof(CLayer)), 4 * kElement, kElement},
                   layers.IsEmpty() ? nothing : layers[0].epsilon, ViewToken(self.box, Block::kLayers));
}

// Read-only: they follow from the other members.
template <class Get>
void DefineDerived(py::class_<Sequence<CLayer>>& cls, const char* name, Get get) {
  cls.def_property_readonly(name, [get](const Sequence<CLayer>& self) {
    py::array view = get(self);
    MakeReadOnly(view);
    return view;
  });
}

void DefineLayers(py::module_& module) {
  auto classes = DefineRecord<CLayer>(module, "Layer", "Layers", keys::kLayerKeys);
  auto& cls = classes.sequence;
  DefineDerived(cls, "layer_z", [](const auto& self) { return DerivedColumn(self, &CLayer::layer_z); });
  DefineDerived(cls, "magnetic", [](const auto& self) { return DerivedColumn(self, &CLayer::magnetic); });
  DefineDerived(cls, "epsilon", &Tensors);
}

void DefineElements(py::module_& module) {
  DefineRecord<CElementSlice>(module, "ElementSlice", "ElementSlices", keys::kSliceKeys);
  auto classes = DefineRecord<CElementLayer>(module, "ElementLayer", "ElementLayers", keys::kElementKeys);
  classes.item.def_property(
      "slices",
      [](const Item<CElementLayer>& self) {
        return Sequence<CElementSlice>{self.owner.box, self.index};
      },
      [](const Item<CElementLayer>& self, const Sequence<CElementSlice>& other) {
        AssignSequence(Sequence<CElementSlice>{self.owner.box, self.index}, other);
      });
}

}  // namespace

void DefineRecords(py::module_& module) {
  DefineLayers(module);
  DefineElements(module);
  auto functions = DefineRecord<CGaussFunction>(module, "GaussFunction", "GaussFunctions", keys::kGaussKeys);
  DefineArrays<CGaussFunction>(functions.item, keys::kSplineKeys);
  DefineRecord<CFitVariable>(module, "FitVariable", "FitVariables", keys::kFitVariableKeys);
  auto datasets = DefineRecord<CDataset>(module, "Dataset", "Datasets", keys::kDatasetKeys);
  DefineArrays<CDataset>(datasets.item, keys::kPointKeys);
}

}  // namespace tolvik::python
