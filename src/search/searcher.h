#pragma once
// Per-thread search records: eight exist for the whole run, one per possible
// search thread; instance 0 belongs to the think thread.
#include <cstdint>

#include "board/board.h"

namespace zorva {

constexpr int kMaxSearchers = 8;

struct Searcher {
  Board board;
  int64_t nodes = 0;
};

// Instance `index`; an index outside 1..7 yields instance 0.
Searcher& searcher(int index);

}  // namespace zorva
