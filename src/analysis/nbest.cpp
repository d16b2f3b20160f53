#include "analysis/nbest.h"

#include <algorithm>
#include <span>

#include "analysis/symmetry.h"
#include "protocol/engine_state.h"
#include "search/driver.h"
#include "search/tt.h"

namespace zorva {

namespace {

struct Lines {
  int count = 0;
  RankedMove moves[kMaxStones];
};

bool proven(int32_t value) { return value >= kProvenBound || value <= -kProvenBound; }

// The lines of one depth, best first; stops early when the search does.
void searchLines(AnalysisSearch& search, Colour side, int depth, int wanted, const Lines& previous, Lines& lines) {
  Move excluded[kMaxStones + 8];  // room for the images of the last move listed
  int excludedCount = 0;
  lines.count = 0;
  while (lines.count < wanted) {
    const std::span<const Move> ruledOut(excluded, size_t(excludedCount));
    // Last depth's move of the same rank is the likeliest again.
    Move hint = lines.count < previous.count ? previous.moves[lines.count].move : kNoMove;
    if (std::find(ruledOut.begin(), ruledOut.end(), hint) != ruledOut.end()) hint = kNoMove;
    const RootResult r = search.searchRoot(depth, side, ruledOut, hint);
    if (search.aborted() || r.move == kNoMove) break;
    const Progress p = progressAt(depth);
    lines.moves[lines.count++] = {r.move, r.value, depth, p.elapsedMs, p.nodes};
    excluded[excludedCount++] = r.move;
    if (engine.settings.nbestSym)
      excludedCount += symmetricImages(search.board(), r.move, side, excluded + excludedCount);
  }
  // Later lines search less of the tree; their values may come out above an earlier one's.
  std::stable_sort(lines.moves, lines.moves + lines.count,
                   [](const RankedMove& a, const RankedMove& b) { return a.value > b.value; });
}

}  // namespace

void runNBest(AnalysisSearch& search, AnalysisReporter& reporter, int count) {
  startAnalysisClock(turnBudget(engine.settings));
  search.prepare();
  const Board& board = search.board();
  const Colour side = board.sideToMove();
  const int wanted = std::clamp(count, 1, kMaxStones);
  static Lines best, lines;  // the think thread's only; too large for its stack together
  best.count = 0;
  int last = 0;
  for (int depth = engine.settings.startDepth; !stopBeforeDepth(board, depth, false); ++depth) {
    search.startDepth(depth);
    searchLines(search, side, depth, wanted, best, lines);
    search.mergeStatistics();
    // A cut-short depth counts only when no depth was done: some list beats none.
    if (search.aborted() && best.count > 0) break;
    best.count = lines.count;
    std::copy(lines.moves, lines.moves + lines.count, best.moves);
    if (search.aborted()) break;
    last = depth;
    reporter.nbest(std::span<const RankedMove>(best.moves, size_t(best.count)));
    if (std::all_of(best.moves, best.moves + best.count, [](const RankedMove& m) { return proven(m.value); })) break;
  }
  finishAnalysis(last);
  reporter.nbest(std::span<const RankedMove>(best.moves, size_t(best.count)));
}

}  // namespace zorva
