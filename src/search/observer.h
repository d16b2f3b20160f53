#pragma once
// What a search tells while it runs and when a think ends. The protocol
// prints it; a search nobody watches (the benchmark, the tuner, self-play)
// keeps the silent observer, whose every event does nothing.
#include <cstdint>

#include "search/report.h"

namespace zorva {

// One depth of the deepening, finished or cut short.
struct DepthReport {
  int depth = 0;
  int minRemainingDepth = 0;
  int32_t value = 0;
  int64_t elapsedMs = 0;
  int64_t nodes = 0;
  Move best = kNoMove;
  int boardHeight = 0;
  bool aborted = false;
};

class SearchObserver {
 public:
  virtual ~SearchObserver() = default;
  // The root starts over its moves (only when the context asks for realtime reports).
  virtual void rootPass() {}
  virtual void rootMoveStarted(Move) {}
  // A root move's search ended; `lost`: the move loses by force.
  virtual void rootMoveDone(Move, bool /*lost*/) {}
  // A new best root move, its value and the line it leads.
  virtual void rootBest(Move, int32_t /*value*/, const Move* /*line*/, int /*length*/) {}
  virtual void depthDone(const DepthReport&) {}
  // The end of a turn: its summary, its best line, and the cells the user
  // kept the engine from (or null).
  virtual void turnDone(const TurnSummary&, const Line&, const int32_t* /*blockTable*/) {}
  // The boards were set up for another rule.
  virtual void ruleSetUp(int /*rule*/) {}
  // A table of `wantedMiB` could not be had; the search goes on with `heldMiB`.
  virtual void tableRefused(uint64_t /*wantedMiB*/, uint64_t /*heldMiB*/) {}
};

SearchObserver& silentObserver();

}  // namespace zorva
