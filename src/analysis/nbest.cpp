#include "analysis/nbest.h"

#include <algorithm>
#include <span>

#include "analysis/symmetry.h"
#include "search/driver.h"
#include "search/tt.h"

namespace zorva {

namespace {

constexpr int kEarlyStopDepth = 4;  // as a turn: one move left ends the deepening past this

struct Lines {
  int count = 0;
  RankedMove moves[kMaxStones];
};

bool proven(const RankedMove& m) { return m.value >= kProvenBound || m.value <= -kProvenBound; }

std::span<const RankedMove> ranks(const Lines& lines) { return {lines.moves, size_t(lines.count)}; }

// Rules out `m` and, with `images`, the moves whose positions are its images.
void exclude(const Board& b, Colour side, bool images, Move m, Move* excluded, int& count) {
  excluded[count++] = m;
  if (images) count += symmetricImages(b, m, side, excluded + count);
}

// Ranks `first` to `wanted` - 1 at `depth`, after the ranks above them in
// `best`, into `lines`; stops early when the search does. The last depth's
// move of a rank is tried first for it.
bool searchRanks(AnalysisSearch& search, Colour side, bool images, int depth, int first, int wanted,
                 const Lines& best, Lines& lines) {
  Move excluded[kMaxStones + 8];  // room for the images of the last move listed
  int excludedCount = 0;
  std::copy(best.moves, best.moves + first, lines.moves);
  for (int i = 0; i < first; ++i) exclude(search.board(), side, images, best.moves[i].move, excluded, excludedCount);
  bool onlyMove = false;
  for (lines.count = first; lines.count < wanted;) {
    const std::span<const Move> ruledOut(excluded, size_t(excludedCount));
    Move hint = lines.count < best.count ? best.moves[lines.count].move : kNoMove;
    if (std::find(ruledOut.begin(), ruledOut.end(), hint) != ruledOut.end()) hint = kNoMove;
    const RootResult r = search.searchRoot(depth, side, ruledOut, hint);
    if (search.aborted() || r.move == kNoMove) break;
    const Progress p = progressAt(search.context(), depth);
    lines.moves[lines.count++] = {r.move, r.value, depth, p.elapsedMs, p.nodes};
    onlyMove = onlyMove || (first == 0 && lines.count == 1 && r.onlyMove);
    exclude(search.board(), side, images, r.move, excluded, excludedCount);
  }
  return onlyMove;
}

// Each rank's search also searched the later ranks' moves and found them no
// better, a bound that a later rank's own search, through other windows and
// table entries, may come out above; the list takes the lower of the two.
void capValues(Lines& lines, int first) {
  for (int i = std::max(first, 1); i < lines.count; ++i)
    lines.moves[i].value = std::min(lines.moves[i].value, lines.moves[i - 1].value);
}

// Deepens ranks `first` to `wanted` - 1 up to `maxDepth`, reporting the
// whole list after each depth; returns the last depth completed.
int deepenRanks(AnalysisSearch& search, AnalysisReporter& reporter, bool images, int first, int wanted, int maxDepth,
                Lines& best) {
  static Lines lines;  // the think thread's only; too large for its stack beside `best`
  const Board& board = search.board();
  const Colour side = board.sideToMove();
  const SearchContext& ctx = search.context();
  const Settings& s = *ctx.engineSettings;
  int last = 0;
  for (int depth = s.startDepth; depth <= maxDepth && !stopBeforeDepth(ctx, board, depth, false); ++depth) {
    search.startDepth(depth);
    const bool onlyMove = searchRanks(search, side, images, depth, first, wanted, best, lines);
    search.mergeStatistics();
    // A cut-short depth counts only when none was done: some list beats none.
    if (search.aborted() && best.count > first) break;
    best = lines;
    capValues(best, first);
    if (search.aborted()) break;
    last = depth;
    reporter.nbest(ranks(best));
    const RankedMove* done = best.moves + first;  // the ranks this phase searched
    if (std::all_of(done, static_cast<const RankedMove*>(best.moves + best.count), proven)) break;
    if (onlyMove && depth > kEarlyStopDepth && s.earlyStop) break;
  }
  return last;
}

}  // namespace

void runNBest(AnalysisSearch& search, AnalysisReporter& reporter, int count) {
  const Settings& s = *search.context().engineSettings;
  runNBest(search, reporter, count, {thinkBudget(s, Budget::kTurn), s.nbestSym != 0});
}

void runNBest(AnalysisSearch& search, AnalysisReporter& reporter, int count, const NBestLimits& limits) {
  startAnalysisClock(search.context(), limits.budgetMs);
  search.prepare();
  const int wanted = std::clamp(count, 1, kMaxStones);
  static Lines best;
  best.count = 0;
  // The best move alone first, deepened as a turn deepens, so that it is the
  // move a turn would choose; the other ranks would change the table under
  // it. Then the others, with the same budget again, as deep.
  const Settings& s = *search.context().engineSettings;
  const int last = deepenRanks(search, reporter, limits.distinctImages, 0, 1, s.maxDepth, best);
  if (wanted > 1 && best.count == 1 && !stopRequested(search.context())) {
    extendAnalysisBudget(search.context());
    deepenRanks(search, reporter, limits.distinctImages, 1, wanted, std::max(last, int(s.startDepth)), best);
  }
  finishAnalysis(search.context(), last);
  reporter.nbest(ranks(best));
}

}  // namespace zorva
