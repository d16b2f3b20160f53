#pragma once
// Successive narrowing: a list of candidates (one stone, or a stone for
// each side) ranked by how far the position after them is from a target
// value, re-ranked by ever deeper searches while the list is cut down to
// the most promising. The balance searches use it to find a position worth
// a chosen value; the swap decision of opening rules, to find the most
// balanced fourth and fifth stones.
#include <cstdint>
#include <functional>

#include "analysis/analysis_search.h"
#include "board/board.h"

namespace zorva {

// Every ordered pair of cells of the largest board.
constexpr int kMaxCandidates = kMaxStones * (kMaxStones - 1);

struct Candidate {
  int32_t score;  // distance of the position's value from the target; lower is better
  Move first;     // the mover's stone
  Move second;    // the other side's stone, or kNoMove
};

struct CandidateList {
  int count = 0;
  Candidate entries[kMaxCandidates];
};

// How candidates are played and scored.
struct NarrowingRules {
  Colour mover;     // plays the first stone; the other side the second
  int stones;       // 1 or 2
  Colour searched;  // to move after the candidate; values are from its view
  int32_t target;   // a candidate scores |value - target|
};

// The one list of the think thread's jobs: too large for its stack.
CandidateList& analysisCandidates();

// The cells that may hold a candidate's stone: every empty cell, or, once
// there are stones, those within three cells of one in both directions.
// Blocked cells, cells whose stone leads into a blocked path and cells
// walled for the colour are left out; a Renju forbidden point is not.
void collectSingles(AnalysisSearch& search, const NarrowingRules& rules, CandidateList& list);
// Pairs (the mover's stone, then the other side's) where at least two of
// these hold: the first stone's cell is near a stone, the second's is, the
// two are neighbours; with `emptyBoardCounts`, an empty board is one.
void collectPairs(AnalysisSearch& search, const NarrowingRules& rules, bool emptyBoardCounts, CandidateList& list);

// Sorts by score, the earlier first among equals.
void sortCandidates(CandidateList& list);

// Deepens from depth 1 over the list, which starts scored and sorted: entry
// 0 always holds the best candidate found. Passes stop as a turn's depths
// do, counting the candidate's two stones ahead; a pass cut short leaves
// only its improvements of entry 0. `afterPass(depth)` runs after each
// completed pass. Returns the last completed depth, 0 for none.
int narrow(AnalysisSearch& search, const NarrowingRules& rules, CandidateList& list,
           const std::function<void(int)>& afterPass);

// The list's length after a pass at `depth` that started with `length`
// entries, the best scoring `bestScore`.
int shortenedLength(int length, int depth, int32_t bestScore);

}  // namespace zorva
