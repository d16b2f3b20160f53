#pragma once
// Positions the engine must not steer into, given by the front end as move
// sequences and kept as position hashes. A per-cell mark says which cells
// occur in some path, so the search looks a move up only when its cell is
// marked.
#include <cstdint>

#include "board/types.h"

namespace zorva {

class BlockPaths {
 public:
  static constexpr int kCapacity = 65536;  // entry 0 is never used

  // Stores `key`; false when the set is full.
  bool add(uint64_t key);
  // Takes every entry equal to `key` away.
  void remove(uint64_t key);
  void reset();
  void mark(Move m) { marks_[m] = 1; }

  bool marked(Move m) const { return marks_[m] != 0; }
  bool contains(uint64_t key) const;
  int count() const { return count_; }

 private:
  static constexpr int kIndexSlots = 2 * kCapacity;  // open addressing, at most half full

  void rebuildIndex();

  uint64_t keys_[kCapacity] = {};
  int32_t count_ = 1;
  int32_t marks_[kCellSlots] = {};
  uint32_t index_[kIndexSlots] = {};  // entry numbers, 0 for an empty slot
};

}  // namespace zorva
