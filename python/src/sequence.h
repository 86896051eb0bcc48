// SPDX-License-Identifier: GPL-2.0-or-later
// A list of records of a state as a sequence of Python, and one record of it. Neither holds a record: they
// look it up at each use, so that they never point into memory that has moved.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "fields.h"
#include "raise.h"
#include "views.h"

namespace tolvik::python {

/// Where the records of a kind stand: Of gives the list, with parent the index of the record that holds it
/// (-1 for the state itself), kBlock the block of its memory.
template <class Record>
struct Home;

/// The list of one kind of record.
template <class Record>
struct Sequence {
  Shared box;
  std::int32_t parent = -1;

  CArray<Record>& list() const { return Home<Record>::Of(*box, parent); }
  void RequireMovable() const { box->RequireMovable(Home<Record>::kBlock); }
};

/// One record by its place.
template <class Record>
struct Item {
  Sequence<Record> owner;
  std::int32_t index = 0;

  Record& get() const {
    CArray<Record>& list = owner.list();
    if (index >= list.size)
      Raise("no_record", kBlockNames[static_cast<std::size_t>(Home<Record>::kBlock)], index);
    return list[index];
  }
};

/// A place of Python, which counts from the end where it is negative. Raises IndexError.
template <class Record>
std::int32_t PlaceOf(const Sequence<Record>& self, py::ssize_t index) {
  const std::int32_t size = self.list().size;
  if (index < -size || index >= size) {
    Raise("no_record", kBlockNames[static_cast<std::size_t>(Home<Record>::kBlock)], index);
  }
  return static_cast<std::int32_t>(index < 0 ? index + size : index);
}

/// Takes a record out. Raises IndexError.
template <class Record>
void Remove(const Sequence<Record>& self, py::ssize_t index) {
  const std::int32_t place = PlaceOf(self, index);
  self.RequireMovable();
  self.box->Refresh();
  CArray<Record>& list = self.list();
  std::move(list.begin() + place + 1, list.end(), list.begin() + place);
  CArray<Record> shorter;
  for (std::int32_t i = 0; i + 1 < list.size; ++i) shorter.Append(std::move(list[i]));
  list = std::move(shorter);
  self.box->Restack(-1, Home<Record>::kBlock);
}

/// Puts a copy of `like`, or a fresh record, before the place `index` and sets the attributes given. With a
/// wrong attribute the list stays as it was.
template <class Record>
Item<Record> Insert(const Sequence<Record>& self, py::ssize_t index, const Item<Record>* like,
                    const py::kwargs& attributes) {
  self.RequireMovable();
  self.box->Refresh();
  if (like != nullptr) like->owner.box->Refresh();
  Record fresh = like != nullptr ? like->get() : Record();
  CArray<Record>& list = self.list();
  const py::ssize_t size = list.size;
  const py::ssize_t place = std::clamp<py::ssize_t>(index < 0 ? index + size : index, 0, size);
  list.Append(std::move(fresh));
  std::rotate(list.begin() + place, list.end() - 1, list.end());
  const Item<Record> item{self, static_cast<std::int32_t>(place)};
  self.box->Restack(like != nullptr && like->owner.box == self.box ? -1 : item.index, Home<Record>::kBlock);
  try {
    const py::object made = py::cast(item);
    for (const auto& [name, value] : attributes) py::setattr(made, name, value);
  } catch (...) {
    Remove(self, place);
    throw;
  }
  return item;
}

/// Takes the records of another list.
template <class Record>
void AssignSequence(const Sequence<Record>& self, const Sequence<Record>& other) {
  self.RequireMovable();
  other.box->Refresh();
  self.list() = CArray<Record>(other.list());
  self.box->Restack(-1, Home<Record>::kBlock);
}

/// Columns: a number as an array on the records, a text as a tuple.
template <class Record>
void DefineColumn(py::class_<Sequence<Record>>& cls, std::string_view start, keys::Field<Record> field,
                  std::string_view meaning) {
  const std::string name(keys::Name(start)), doc(meaning);
  const auto get = [field](const Sequence<Record>& self) -> py::object {
    return std::visit(
        [&]<class Number>(Number Record::*member) -> py::object {
          CArray<Record>& list = self.list();
          if constexpr (std::is_same_v<Number, CCharArray>) {
            py::list texts;
            for (const Record& record : list) texts.append(Give(record.*member));
            return py::tuple(texts);
          } else {
            return StridedView(list.IsEmpty() ? nullptr : &(list[0].*member), list.size, sizeof(Record),
                               ViewToken(self.box, Home<Record>::kBlock));
          }
        },
        field);
  };
  const auto set = [field, get, name](const Sequence<Record>& self, const py::object& values) {
    const auto* text = std::get_if<CCharArray Record::*>(&field);
    if (text == nullptr) return AssignInto(py::array(get(self)), values);
    CArray<Record>& list = self.list();
    const py::list given(values);
    if (given.size() != static_cast<std::size_t>(list.size)) {
      Raise("wrong_length", name, list.size, given.size());
    }
    std::vector<CCharArray> texts(given.size());
    for (std::size_t i = 0; i < given.size(); ++i) Take(texts[i], given[i], name.c_str());
    for (std::int32_t i = 0; i < list.size; ++i)
      list[i].*(*text) = std::move(texts[static_cast<std::size_t>(i)]);
  };
  cls.def_property(name.c_str(), get, set, doc.c_str());
}

/// The classes of a kind of record and of its list, both returned for what is special to them.
template <class Record>
struct RecordClasses {
  py::class_<Item<Record>> item;
  py::class_<Sequence<Record>> sequence;
};

template <class Record>
RecordClasses<Record> DefineRecord(py::module_& module, const char* name, const char* plural,
                                   std::span<const keys::Key<Record>> list) {
  using List = Sequence<Record>;
  using One = Item<Record>;
  RecordClasses<Record> classes{py::class_<One>(module, name), py::class_<List>(module, plural)};
  DefineFields<One, Record>(classes.item, list);
  auto& cls = classes.sequence;
  cls.def("__len__", [](const List& self) { return self.list().size; });
  cls.def("__getitem__", [](const List& self, py::ssize_t index) { return One{self, PlaceOf(self, index)}; });
  cls.def("__getitem__", [](const List& self, const py::slice& slice) {
    std::size_t start = 0, stop = 0, step = 0, count = 0;
    if (!slice.compute(static_cast<std::size_t>(self.list().size), &start, &stop, &step, &count)) {
      throw py::error_already_set();
    }
    py::list items;
    for (; count > 0; --count, start += step) items.append(One{self, static_cast<std::int32_t>(start)});
    return items;
  });
  cls.def("__setitem__", [](const List& self, py::ssize_t index, const One& other) {
    self.RequireMovable();
    other.owner.box->Refresh();
    self.list()[PlaceOf(self, index)] = Record(other.get());
    self.box->Restack(-1, Home<Record>::kBlock);
  });
  cls.def("__delitem__", &Remove<Record>);
  cls.def(
      "append",
      [](const List& self, const One* like, const py::kwargs& attributes) {
        return Insert(self, self.list().size, like, attributes);
      },
      py::arg("like") = nullptr);
  cls.def("insert", &Insert<Record>, py::arg("index"), py::arg("like") = nullptr);
  for (const auto& key : list) DefineColumn<Record>(cls, key.start, key.field, key.meaning);
  return classes;
}

}  // namespace tolvik::python
