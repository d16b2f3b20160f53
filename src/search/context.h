#pragma once
// What one search reads besides its searchers' boards and the table: the
// settings it obeys, its clock and stop flags, the cells and positions the
// user ruled out, and the opening database. The node search reads nothing
// else of the engine, so a search is set up by filling one of these.
#include <cstdint>

#include "board/board.h"
#include "search/block_paths.h"
#include "search/observer.h"
#include "search/relaxed.h"

namespace zorva {

namespace db {
class Database;
}
struct Settings;
struct ThinkState;

// The settings a search obeys, taken when it starts: a change while it runs
// waits for the next search.
struct SearchSettings {
  int32_t maxNode = 2000000000;  // in units of 1024 nodes; -1: no time or node limit
  int32_t cautionFactor = 1;     // static pruning only below 2
  int32_t threeDef = 1;          // answer an open three only with defences
  int32_t threadNum = 1;
  int32_t threadSplitDepth = 8;
  int32_t useDatabase = 0;
  int32_t dbDepthWl = 5;  // plies from the root at which the database is consulted
  bool realtime = false;  // the root reports its best moves as it finds them
};

struct SearchContext {
  SearchSettings settings;
  const Settings* engineSettings = nullptr;  // as set now: the think driver's time and depth limits
  ThinkState* think = nullptr;  // the clock, budget, depth and node counts of the think in progress
  const Relaxed<int32_t>* stopRequest = nullptr;  // set from outside to end the search; null: never
  Relaxed<int32_t> aborted{0};                    // set by the search once it must stop
  const int32_t* blockTable = nullptr;            // cells the engine never chooses (1), or null
  const BlockPaths* blockPaths = nullptr;         // positions the engine never moves into, or null
  db::Database* database = nullptr;               // consulted near the root while in use, or null
  SearchObserver* observer = &silentObserver();   // told of progress and results
};

// True once someone outside the search asked it to stop.
inline bool stopRequested(const SearchContext& ctx) { return ctx.stopRequest && *ctx.stopRequest > 0; }

// True when the user ruled `m` out for the engine: a blocked cell.
inline bool blocked(const SearchContext& ctx, Move m) { return ctx.blockTable && ctx.blockTable[m]; }

}  // namespace zorva
