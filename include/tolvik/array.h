// SPDX-License-Identifier: GPL-2.0-or-later
// The growable array and the text type of all records that cross the boundary to a front end.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <utility>

namespace tolvik {

/// Growable array that owns its elements and copies them deeply.
///
/// The three members, in this order, are the contract with a front end: `size` elements are alive, `capacity`
/// elements fit into the block at `data`, which is null when nothing is allocated. A full array grows to
/// capacity * 15 / 10 + 16; a copy has capacity equal to size.
/// Throws std::length_error beyond 2^31 - 1 elements and std::bad_alloc when memory is short.
template <class T>
class CArray {
 public:
  std::int32_t size = 0;
  std::int32_t capacity = 0;
  T* data = nullptr;

  CArray() = default;
  CArray(const CArray& other) { CopyFrom(other.data, other.size); }
  CArray(CArray&& other) noexcept { Swap(other); }
  ~CArray() { Clear(); }

  /// Deep copy; assignment to itself leaves the array as it is.
  CArray& operator=(const CArray& other) {
    if (this == &other) return *this;
    if constexpr (std::is_trivially_copyable_v<T>) {
      // Records are copied for every evaluation of a fit: a block of the right size is used again.
      if (capacity == other.size && other.size > 0) {
        std::memcpy(data, other.data, sizeof(T) * static_cast<std::size_t>(other.size));
        size = other.size;
        return *this;
      }
    }
    CArray copy(other);
    Swap(copy);
    return *this;
  }
  CArray& operator=(CArray&& other) noexcept {
    if (this != &other) {
      Clear();
      Swap(other);
    }
    return *this;
  }

  /// Appends a copy of value, which may be an element of this array.
  void Append(const T& value) { Emplace(value); }
  void Append(T&& value) { Emplace(std::move(value)); }

  /// Makes the array count elements long, each a copy of value; the old elements are dropped.
  void Assign(std::int32_t count, const T& value) {
    CArray fresh;
    if (count > 0) {
      fresh.Allocate(count);
      std::uninitialized_fill_n(fresh.data, count, value);
      fresh.size = count;
    }
    Swap(fresh);
  }

  /// Drops all elements and the block; data is null afterwards.
  void Clear() noexcept {
    if (data != nullptr) {
      std::destroy_n(data, size);
      Release(data, capacity);
    }
    data = nullptr;
    size = 0;
    capacity = 0;
  }

  void Swap(CArray& other) noexcept {
    std::swap(size, other.size);
    std::swap(capacity, other.capacity);
    std::swap(data, other.data);
  }

  T& operator[](std::int32_t index) { return data[index]; }
  const T& operator[](std::int32_t index) const { return data[index]; }
  T& Last() { return data[size - 1]; }
  const T& Last() const { return data[size - 1]; }
  bool IsEmpty() const { return size == 0; }

  T* begin() { return data; }
  T* end() { return data + size; }
  const T* begin() const { return data; }
  const T* end() const { return data + size; }

 protected:
  static T* Obtain(std::int32_t count) {
    return std::allocator<T>().allocate(static_cast<std::size_t>(count));
  }
  static void Release(T* block, std::int32_t count) noexcept {
    std::allocator<T>().deallocate(block, static_cast<std::size_t>(count));
  }
  void Allocate(std::int32_t count) {
    data = Obtain(count);
    capacity = count;
  }
  void CopyFrom(const T* source, std::int32_t count) {
    if (count <= 0) return;
    Allocate(count);
    try {
      std::uninitialized_copy_n(source, count, data);
    } catch (...) {
      Release(data, capacity);
      data = nullptr;
      capacity = 0;
      throw;
    }
    size = count;
  }

 private:
  template <class Value>
  void Emplace(Value&& value) {
    if (size < capacity) {
      ::new (static_cast<void*>(data + size)) T(std::forward<Value>(value));
      ++size;
      return;
    }
    const std::int64_t wanted = std::int64_t{capacity} * 15 / 10 + 16;
    if (size == INT32_MAX) throw std::length_error("CArray: too many elements");
    const auto grown = static_cast<std::int32_t>(std::min<std::int64_t>(wanted, INT32_MAX));
    T* block = Obtain(grown);
    try {  // the new element first: value may live in the old block
      ::new (static_cast<void*>(block + size)) T(std::forward<Value>(value));
    } catch (...) {
      Release(block, grown);
      throw;
    }
    MoveInto(block);
    const std::int32_t count = size + 1;
    Clear();
    data = block;
    capacity = grown;
    size = count;
  }

  void MoveInto(T* block) {
    static_assert(std::is_nothrow_move_constructible_v<T>, "growing must not lose elements");
    if constexpr (std::is_trivially_copyable_v<T>) {
      if (size > 0) std::memcpy(block, data, sizeof(T) * static_cast<std::size_t>(size));
    } else {
      std::uninitialized_move_n(data, size, block);
    }
  }
};

template <class T>
bool operator==(const CArray<T>& a, const CArray<T>& b) {
  return a.size == b.size && std::equal(a.begin(), a.end(), b.begin());
}

/// A NUL-terminated text; size counts the NUL. The empty text has size 1 and capacity 1; a cleared one has
/// size 0 and null data and reads as empty too. A NUL inside a given text ends it.
class CCharArray : public CArray<char> {
 public:
  CCharArray() { Set({}); }
  CCharArray(std::string_view text) { Set(text); }  // NOLINT: texts convert
  CCharArray(const char* text) { Set(text); }       // NOLINT: texts convert

  CCharArray(const CCharArray&) = default;
  CCharArray(CCharArray&&) noexcept = default;
  CCharArray& operator=(const CCharArray&) = default;
  CCharArray& operator=(CCharArray&&) noexcept = default;
  ~CCharArray() = default;

  /// Replaces the text; capacity becomes equal to size.
  void Set(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    if (text.size() >= static_cast<std::size_t>(INT32_MAX))
      throw std::length_error("CCharArray: text too long");
    CArray<char> fresh;
    fresh.Assign(static_cast<std::int32_t>(text.size()) + 1, '\0');
    if (!text.empty()) std::memcpy(fresh.data, text.data(), text.size());
    Swap(fresh);
  }

  /// The text without its NUL.
  std::string_view View() const {
    return size > 1 ? std::string_view(data, static_cast<std::size_t>(size) - 1) : std::string_view();
  }
  /// The text as a C string; never null.
  const char* CStr() const { return size > 0 ? data : ""; }

  /// Compares the bytes; empty and cleared texts are equal.
  friend bool operator==(const CCharArray& a, const CCharArray& b) { return a.View() == b.View(); }
  friend bool operator==(const CCharArray& a, std::string_view b) { return a.View() == b; }
  friend bool operator==(const CCharArray& a, const char* b) { return a.View() == b; }
};

}  // namespace tolvik
