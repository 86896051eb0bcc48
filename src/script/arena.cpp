// SPDX-License-Identifier: GPL-2.0-or-later
#include "script/arena.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <functional>

namespace tolvik {

LuaArena::LuaArena() : block_(new std::byte[kBlock]) {}

bool LuaArena::Save() {
  if (HasOutside()) return false;
  image_.assign(block_.get(), block_.get() + marks_.used);
  image_marks_ = marks_;
  return true;
}

void LuaArena::Restore() {
  std::memcpy(block_.get(), image_.data(), image_.size());
  marks_ = image_marks_;
}

// Steps of 16 bytes up to 1024, then powers of two.
std::size_t LuaArena::ClassOf(std::size_t size) {
  if (size <= kLargestStepped) return (size + kStep - 1) / kStep;
  return kLargestStepped / kStep + static_cast<std::size_t>(std::bit_width((size - 1) / kLargestStepped));
}

std::size_t LuaArena::SizeOfClass(std::size_t index) {
  constexpr std::size_t stepped = kLargestStepped / kStep;
  return index <= stepped ? index * kStep : kLargestStepped << (index - stepped);
}

bool LuaArena::IsInside(const void* memory) const {
  const std::less<const void*> before;
  return !before(memory, block_.get()) && before(memory, block_.get() + kBlock);
}

void* LuaArena::Take(std::size_t size) {
  if (size <= kLargest) {
    const std::size_t index = ClassOf(size);
    if (void* piece = marks_.free[index]) {
      std::memcpy(&marks_.free[index], piece, sizeof piece);  // its first bytes link to the next free piece
      return piece;
    }
    const std::size_t rounded = SizeOfClass(index);
    if (rounded <= kBlock - marks_.used) {
      void* piece = block_.get() + marks_.used;
      marks_.used += rounded;
      return piece;
    }
  }
  void* piece = std::malloc(size);
  if (piece != nullptr) ++outside_;
  return piece;
}

void LuaArena::Free(void* memory, std::size_t size) {
  if (!IsInside(memory)) {
    std::free(memory);
    --outside_;
    return;
  }
  void*& head = marks_.free[ClassOf(size)];
  std::memcpy(memory, &head, sizeof head);
  head = memory;
}

void* LuaArena::Resize(void* memory, std::size_t old_size, std::size_t new_size) {
  if (!IsInside(memory)) return std::realloc(memory, new_size);
  if (new_size <= kLargest && ClassOf(new_size) == ClassOf(old_size)) return memory;
  void* moved = Take(new_size);
  if (moved == nullptr) return nullptr;
  std::memcpy(moved, memory, std::min(old_size, new_size));
  Free(memory, old_size);
  return moved;
}

void* LuaArena::Hook(void* arena, void* memory, std::size_t old_size, std::size_t new_size) noexcept {
  LuaArena& self = *static_cast<LuaArena*>(arena);
  if (memory == nullptr) old_size = 0;
  const std::size_t others = self.marks_.in_use - old_size;
  if (new_size == 0) {
    if (memory != nullptr) self.Free(memory, old_size);
    self.marks_.in_use = others;
    return nullptr;
  }
  if (new_size > old_size && (others > self.limit || new_size > self.limit - others)) return nullptr;
  void* piece = memory == nullptr ? self.Take(new_size) : self.Resize(memory, old_size, new_size);
  if (piece == nullptr && new_size <= old_size) piece = memory;
  if (piece != nullptr) self.marks_.in_use = others + new_size;
  return piece;
}

}  // namespace tolvik
