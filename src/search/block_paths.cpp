#include "search/block_paths.h"

#include <algorithm>
#include <iterator>

namespace zorva {

namespace {
constexpr uint32_t kIndexMask = 2 * BlockPaths::kCapacity - 1;
uint32_t slotOf(uint64_t key) { return uint32_t(key >> 40) & kIndexMask; }
}  // namespace

bool BlockPaths::add(uint64_t key) {
  if (count_ >= kCapacity) return false;
  keys_[count_] = key;
  uint32_t slot = slotOf(key);
  while (index_[slot] != 0) slot = (slot + 1) & kIndexMask;
  index_[slot] = uint32_t(count_++);
  return true;
}

void BlockPaths::remove(uint64_t key) {
  count_ = int32_t(std::remove(keys_ + 1, keys_ + count_, key) - keys_);
  rebuildIndex();
}

void BlockPaths::reset() {
  std::fill(keys_, keys_ + count_, 0);
  count_ = 1;
  std::fill(std::begin(marks_), std::end(marks_), 0);
  std::fill(std::begin(index_), std::end(index_), 0);
}

bool BlockPaths::contains(uint64_t key) const {
  for (uint32_t slot = slotOf(key); index_[slot] != 0; slot = (slot + 1) & kIndexMask)
    if (keys_[index_[slot]] == key) return true;
  return false;
}

void BlockPaths::rebuildIndex() {
  std::fill(std::begin(index_), std::end(index_), 0);
  for (int i = 1; i < count_; ++i) {
    uint32_t slot = slotOf(keys_[i]);
    while (index_[slot] != 0) slot = (slot + 1) & kIndexMask;
    index_[slot] = uint32_t(i);
  }
}

}  // namespace zorva
