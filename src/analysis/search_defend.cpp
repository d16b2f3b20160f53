#include "analysis/search_defend.h"

#include <algorithm>
#include <span>

#include "search/driver.h"
#include "search/movegen.h"
#include "search/node.h"
#include "search/tt.h"

namespace zorva {

namespace {

constexpr int kHolds = -1;
constexpr int kFiveLoss = 2;  // our move, then the opponent's five

struct Defence {
  RankedMove ranked;
  int lossPlies;      // from our move to the opponent's five, or kHolds
  bool makesFive;     // ends the game: nothing to search after it
};

struct Defences {
  int count = 0;
  int holding = 0;  // entries [0, holding) hold, best first
  Defence entries[kMaxStones];
};

// A cell no line of stones reaches neither blocks nor threatens anything;
// it holds only when nothing threatens, and then every cell would.
bool candidate(const SearchContext& ctx, Board& b, Move m, Colour side) {
  const CellInfo& info = b.info[m];
  return choosable(ctx, b, m, side) &&
         (b.stoneCount() == 0 || (info.patternWord[0] | info.patternWord[1]) != 0);
}

// Plies from `m` to the opponent's five when its threats win after it, else kHolds.
int threatLoss(AnalysisSearch& search, Colour side, Move m, int level) {
  Board& b = search.board();
  const Colour other = opponent(side);
  b.placeStone(m, side);
  const int plies = b.threat(other, kFiveClass).empty() ? search.threatWinPlies(other, level) : 0;
  b.removeStone(m);
  return plies < 0 ? kHolds : plies + kFiveLoss;
}

void collect(AnalysisSearch& search, Colour side, int level, Defences& list) {
  Board& b = search.board();
  list.count = 0;
  for (int row = 0; row < b.height; ++row)
    for (int col = 0; col < b.width; ++col) {
      const Move m = makeMove(row, col);
      if (!candidate(search.context(), b, m, side)) continue;
      const bool five = b.threat(side, kFiveClass).contains(m);
      list.entries[list.count++] = {{m, 0, 0, 0, 0}, five ? kHolds : threatLoss(search, side, m, level), five};
    }
}

// Holding moves first, best first, then the lost ones, longest loss first.
void order(Defences& list) {
  Defence* e = list.entries;
  Defence* split = std::stable_partition(e, e + list.count, [](const Defence& d) { return d.lossPlies == kHolds; });
  list.holding = int(split - e);
  std::stable_sort(e, split, [](const Defence& a, const Defence& b) { return a.ranked.value > b.ranked.value; });
  std::stable_sort(split, e + list.count, [](const Defence& a, const Defence& b) { return a.lossPlies > b.lossPlies; });
}

// Searches every holding move to `depth`; false when the search stopped,
// leaving the last depth's values.
bool searchHolding(AnalysisSearch& search, Colour side, int depth, Defences& list) {
  static int32_t values[kMaxStones];
  Board& b = search.board();
  for (int i = 0; i < list.holding; ++i) {
    const Defence& d = list.entries[i];
    if (d.makesFive) {
      values[i] = kWin + depth;
      continue;
    }
    b.placeStone(d.ranked.move, side);
    values[i] = -search.searchNode(depth - 1, 1, -kRootWindow, kRootWindow, opponent(side));
    b.removeStone(d.ranked.move);
    if (search.aborted()) return false;
  }
  const Progress p = progressAt(search.context(), depth);
  for (int i = 0; i < list.holding; ++i) list.entries[i].ranked = {list.entries[i].ranked.move, values[i], depth,
                                                                    p.elapsedMs, p.nodes};
  return true;
}

void report(const SearchContext& ctx, AnalysisReporter& reporter, const Defences& list, int depth) {
  if (list.holding > 0) {
    RankedMove holding[kMaxStones];
    for (int i = 0; i < list.holding; ++i) holding[i] = list.entries[i].ranked;
    reporter.defence(std::span<const RankedMove>(holding, size_t(list.holding)));
    return;
  }
  if (list.count == 0) return;
  const Progress p = progressAt(ctx, depth);
  const Defence& longest = list.entries[0];
  reporter.noDefence({longest.ranked.move, longest.ranked.value, depth, p.elapsedMs, p.nodes}, longest.lossPlies);
}

}  // namespace

void runSearchDefend(AnalysisSearch& search, AnalysisReporter& reporter, int level) {
  startAnalysisClock(search.context(), thinkBudget(*search.context().engineSettings, Budget::kTurn));
  search.prepare();
  const Board& board = search.board();
  const Colour side = board.sideToMove();
  static Defences list;  // the think thread's only
  collect(search, side, level, list);
  order(list);
  int last = 0;
  const SearchContext& ctx = search.context();
  for (int depth = ctx.engineSettings->startDepth; list.holding > 0 && !stopBeforeDepth(ctx, board, depth, false);
       ++depth) {
    search.startDepth(depth);
    const bool completed = searchHolding(search, side, depth, list);
    search.mergeStatistics();
    if (!completed) break;
    order(list);
    last = depth;
    report(search.context(), reporter, list, depth);
    const Defence* e = list.entries;
    if (std::all_of(e, e + list.holding, [](const Defence& d) { return d.ranked.value >= kProvenBound; })) break;
  }
  finishAnalysis(search.context(), last);
  report(search.context(), reporter, list, last);
}

}  // namespace zorva
