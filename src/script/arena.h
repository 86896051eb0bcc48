// SPDX-License-Identifier: GPL-2.0-or-later
// Memory of one Lua state: one block that can be reset to a saved image, and malloc for pieces that do not
// fit.
//
// Opening Lua with its libraries costs far more than a short script. So a state is built once, saved, and
// reset by one memcpy for each calculation: all pointers stay valid, since the block does not move.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace tolvik {

class LuaArena {
 public:
  LuaArena();

  /// Empties the block. No memory may be in use outside of it.
  void Reset() { marks_ = {}; }

  /// Saves the content of the block. False, and nothing is saved, when memory outside of it is in use.
  bool Save();

  /// Resets the block to the saved content.
  void Restore();

  bool HasImage() const { return !image_.empty(); }

  /// True when memory outside the block is in use, which only lua_close gives back.
  bool HasOutside() const { return outside_ > 0; }

  /// Bytes that Lua may hold; beyond it an allocation fails and Lua raises its own error.
  std::size_t limit = static_cast<std::size_t>(-1);

  /// The lua_Alloc of this arena. Shrinking never fails.
  static void* Hook(void* arena, void* memory, std::size_t old_size, std::size_t new_size) noexcept;

 private:
  static constexpr std::size_t kBlock = std::size_t{1} << 18;
  static constexpr std::size_t kStep = 16, kLargestStepped = 1024, kLargest = std::size_t{1} << 16;
  static constexpr std::size_t kClasses = kLargestStepped / kStep + 1 + 6;

  struct Marks {
    std::size_t used = 0;    // bytes of the block handed out so far
    std::size_t in_use = 0;  // bytes that Lua holds
    std::array<void*, kClasses> free{};
  };

  static std::size_t ClassOf(std::size_t size);
  static std::size_t SizeOfClass(std::size_t index);
  bool IsInside(const void* memory) const;
  void* Take(std::size_t size);
  void Free(void* memory, std::size_t size);
  void* Resize(void* memory, std::size_t old_size, std::size_t new_size);

  std::unique_ptr<std::byte[]> block_;
  Marks marks_;
  std::size_t outside_ = 0;  // pieces outside the block
  std::vector<std::byte> image_;
  Marks image_marks_;
};

}  // namespace tolvik
