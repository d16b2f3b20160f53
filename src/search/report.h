#pragma once
// Progress and end-of-turn lines of the think driver, all through sendLine.
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
};

// The value shown to the user: proven results lose their depth offset, and
// everything is clamped to the display range.
int32_t displayedValue(int32_t value, int depth, bool aborted);
const char* valueLabel(int32_t displayed);

void reportDepth(int depth, int minRemainingDepth, int32_t value, int64_t elapsedMs, int64_t nodes, Move best,
                 int boardHeight, bool aborted);
void reportTurn(const TurnSummary& summary, const Line& bestLine, int boardHeight);
// The root's best line each time it changes during a depth: row and column
// from 0, as in the other REALTIME lines.
void reportRealtimeLine(const Move* moves, int length);
// Reminds the user which cells the engine was not allowed to choose.
void reportBlockedCells(const int32_t* blockTable, int boardWidth, int boardHeight);

}  // namespace zorva
