// SPDX-License-Identifier: GPL-2.0-or-later
// Elements of lists by an index that may lie outside.
#pragma once

#include <cstdint>

#include "tolvik/array.h"

namespace tolvik {

/// The element at an index; null where there is none.
template <class T>
T* Find(CArray<T>& list, std::int32_t index) {
  return index >= 0 && index < list.size ? &list[index] : nullptr;
}
template <class T>
const T* Find(const CArray<T>& list, std::int32_t index) {
  return index >= 0 && index < list.size ? &list[index] : nullptr;
}

/// A member of the element at an index; null where there is no element.
template <class Record, class Member>
Member* Find(CArray<Record>& list, std::int32_t index, Member Record::*member) {
  Record* record = Find(list, index);
  return record != nullptr ? &(record->*member) : nullptr;
}
template <class Record, class Member>
const Member* Find(const CArray<Record>& list, std::int32_t index, Member Record::*member) {
  const Record* record = Find(list, index);
  return record != nullptr ? &(record->*member) : nullptr;
}

}  // namespace tolvik
