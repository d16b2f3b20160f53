#pragma once
// What a think reports when it ends: its best line and its summary.
#include <cstdint>

#include "board/board.h"

namespace zorva {

constexpr int kMaxLine = kMaxStones;

// A principal variation: cells from the root on.
struct Line {
  int length = 0;
  Move moves[kMaxLine];
};

struct TurnSummary {
  int depth = 0;             // last depth counted as done
  int minRemainingDepth = 0;
  int64_t elapsedMs = 0;
  int64_t nodes = 0;
  int32_t value = 0;         // the turn's final value
  bool aborted = false;
  bool showDetail = false;
  int boardWidth = 0;
  int boardHeight = 0;
};

}  // namespace zorva
