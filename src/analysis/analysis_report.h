#pragma once
// What the analyses tell while they run and when they end. They hand plain
// results to a reporter; the protocol's reporter (protocol/analysis_lines.h)
// prints them.
#include <cstdint>
#include <span>

#include "analysis/analysis_search.h"
#include "analysis/soosorv.h"
#include "board/types.h"

namespace zorva {

// A move with its value and when its search ended.
struct RankedMove {
  Move move = kNoMove;
  int32_t value = 0;  // for the side that plays it
  int depth = 0;
  int64_t elapsedMs = 0;
  int64_t nodes = 0;
};

// The swap questions of the Swap2 rule: after three stones, after five.
enum class SwapStep { First, Second };

class AnalysisReporter {
 public:
  virtual ~AnalysisReporter() = default;
  // The best balance candidate, its one or two stones (kNoMove when there
  // is none), after a pass or as the answer (`final`).
  virtual void balance(const Progress& p, int32_t offset, int32_t score, std::span<const Move> stones,
                       bool final) = 0;
  // The best moves found, best first.
  virtual void nbest(std::span<const RankedMove> moves) = 0;
  // The moves that hold, best first.
  virtual void defence(std::span<const RankedMove> holding) = 0;
  // No move holds: the one that loses last, `lossPlies` from it to the opponent's five.
  virtual void noDefence(const RankedMove& longest, int lossPlies) = 0;
  // Whether the side to move swaps colours at `step`.
  virtual void swapAnswer(SwapStep step, bool swap) = 0;
  // No swap after three stones: the fourth and fifth stones offered instead
  // (kNoMove when there is no pair to offer).
  virtual void swapStones(Move fourth, Move fifth) = 0;
};

}  // namespace zorva
