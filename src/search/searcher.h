#pragma once
// Per-thread search records: eight exist for the whole run, one per possible
// search thread; instance 0 belongs to the think thread. Everything a search
// needs per ply lives here, so nothing is allocated while searching.
#include <cstdint>

#include "board/board.h"
#include "search/context.h"
#include "search/relaxed.h"

namespace zorva {

constexpr int kMaxSearchers = 8;
constexpr int kMaxPly = 128;
constexpr int kVcfCacheSize = 1 << 16;
constexpr int kVctCacheSize = 1 << 15;

struct ScoredMove {
  int32_t score;
  Move move;
};

// A move that cut a node off, offered again only while its cell still makes
// the same shapes for the mover (`count` is the mover's pattern word there).
struct Killer {
  uint32_t count;
  Move move;
};

// A remembered threat-search result for a position and attacker.
struct VcfCacheEntry {
  uint64_t key;
  int16_t plies;   // plies to the win, or -1 for none found
  int16_t budget;  // the ply budget (threes, for the wider search) the result holds for
};

struct SplitPoint;

struct Searcher {
  SearchContext* ctx = nullptr;  // the search this record takes part in
  Board board;
  Relaxed<int64_t> nodes{0};  // summed by any thread for the node limit
  int32_t minRemainingDepth = 0;
  SplitPoint* activeSplit = nullptr;  // the innermost shared node this thread works under
  ScoredMove moveLists[kMaxPly][kMaxStones];
  Move pv[kMaxPly][kMaxPly];
  int pvLength[kMaxPly];
  Killer killers[kMaxPly][2];
  int32_t history[kMaxPly][kCellSlots];
  Move scratch[kMaxPly][kMaxStones];  // evaluation's threat-cell lists
  VcfCacheEntry vcfCache[kVcfCacheSize];
  VcfCacheEntry vctCache[kVctCacheSize];

  // Forgets what the previous iteration learnt about move order.
  void clearOrdering();
  // Forgets the threat-search results: marks and blocks change them unseen by the hash.
  void clearThreatCache();
};

// Instance `index`; an index outside 1..7 yields instance 0.
Searcher& searcher(int index);

// Makes every searcher take part in the search of `ctx`.
void bindSearchers(SearchContext& ctx);

// Nodes counted by searchers 0 .. count - 1 since their counters were reset.
int64_t searcherNodes(int count);

}  // namespace zorva
