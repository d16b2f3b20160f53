#include "analysis/narrowing.h"

#include <algorithm>
#include <cstdlib>

#include "search/driver.h"
#include "search/movegen.h"

namespace zorva {

namespace {

constexpr int kNearDistance = 3;
// Lists this long are searched entry by entry with full windows and cut by
// depth; shorter ones race their entries against the best.
constexpr int kShortList = 32;
constexpr int kLongCaps[] = {1024, 512, 256, 128};  // after passes 1 to 4
constexpr int kMinLongLength = 31;
constexpr int kCloseScore = 16;  // a short list whose best is this close loses its tail
constexpr int kMinShortLength = 4;
constexpr int kLookahead = 2;  // a candidate's stones, counted against a full board
constexpr int32_t kLowBound = -9999999;
constexpr int32_t kHighBound = 10000000;

// Cells within kNearDistance of a stone in both directions; false when the board has no stone.
bool nearMap(const Board& b, bool* near) {
  for (int i = 0; i < b.moveCount; ++i) {
    const int row = rowOf(b.moves[i]), col = colOf(b.moves[i]);
    for (int r = std::max(row - kNearDistance, 0); r <= std::min(row + kNearDistance, b.height - 1); ++r)
      for (int c = std::max(col - kNearDistance, 0); c <= std::min(col + kNearDistance, b.width - 1); ++c)
        near[makeMove(r, c)] = b.at(makeMove(r, c)) == EMPTY;
  }
  return b.moveCount > 0;
}

bool allowed(const SearchContext& ctx, const Board& b, Move m, Colour colour) {
  return b.at(m) == EMPTY && !blocked(ctx, m) && !leadsIntoBlockPath(ctx, b, m, colour) &&
         !(b.markedCount > 0 && b.isMarked(m, colour));
}

bool neighbours(Move a, Move b) { return std::abs(rowOf(a) - rowOf(b)) <= 1 && std::abs(colOf(a) - colOf(b)) <= 1; }

void add(CandidateList& list, AnalysisSearch& search, const NarrowingRules& rules, Move first, Move second) {
  const int32_t value = search.evaluate(rules.searched);
  list.entries[list.count++] = {std::abs(value - rules.target), first, second};
}

void play(Board& b, const NarrowingRules& rules, const Candidate& c) {
  b.placeStone(c.first, rules.mover);
  if (c.second != kNoMove) b.placeStone(c.second, opponent(rules.mover));
}

void takeBack(Board& b, const Candidate& c) {
  if (c.second != kNoMove) b.removeStone(c.second);
  b.removeStone(c.first);
}

int32_t searchScore(AnalysisSearch& search, const NarrowingRules& rules, int depth, int32_t alpha, int32_t beta) {
  const int32_t value = search.searchNode(depth, rules.stones, alpha, beta, rules.searched);
  return std::abs(value - rules.target);
}

// A later entry of a short list races the best: a window that only a
// better candidate gets inside first, the full window only for one that
// does. A tie counts one worse, so the earlier-listed stays ahead.
int32_t raceScore(AnalysisSearch& search, const NarrowingRules& rules, int depth, int32_t best) {
  const int32_t alpha = std::max(rules.target - best, kLowBound), beta = std::min(rules.target + best, kHighBound);
  int32_t score = searchScore(search, rules, depth, alpha, beta);
  if (score < best && !search.aborted()) score = searchScore(search, rules, depth, kLowBound, kHighBound);
  return score == best ? best + 1 : score;
}

// One pass at `depth`; false when the search stopped in it.
bool runPass(AnalysisSearch& search, const NarrowingRules& rules, CandidateList& list, int depth) {
  const bool shortList = list.count < kShortList;
  Candidate* e = list.entries;
  Board& b = search.board();
  for (int i = 0; i < list.count; ++i) {
    play(b, rules, e[i]);
    const int32_t score = shortList && i > 0 ? raceScore(search, rules, depth, e[0].score)
                                             : searchScore(search, rules, depth, kLowBound, kHighBound);
    takeBack(b, e[i]);
    if (search.aborted()) return false;
    e[i].score = score;
    if (e[i].score < e[0].score) std::swap(e[0], e[i]);
    if (shortList && e[0].score == 0) break;  // nothing can beat a perfect balance
  }
  return true;
}

}  // namespace

CandidateList& analysisCandidates() {
  static CandidateList list;
  return list;
}

void collectSingles(AnalysisSearch& search, const NarrowingRules& rules, CandidateList& list) {
  Board& b = search.board();
  bool near[kCellSlots] = {};
  const bool anyStone = nearMap(b, near);
  list.count = 0;
  for (int row = 0; row < b.height; ++row)
    for (int col = 0; col < b.width; ++col) {
      const Move m = makeMove(row, col);
      if ((anyStone && !near[m]) || !allowed(search.context(), b, m, rules.mover)) continue;
      b.placeStone(m, rules.mover);
      add(list, search, rules, m, kNoMove);
      b.removeStone(m);
    }
}

void collectPairs(AnalysisSearch& search, const NarrowingRules& rules, bool emptyBoardCounts, CandidateList& list) {
  Board& b = search.board();
  bool near[kCellSlots] = {};
  const int credit = !nearMap(b, near) && emptyBoardCounts ? 1 : 0;
  const Colour other = opponent(rules.mover);
  list.count = 0;
  for (int rowA = 0; rowA < b.height; ++rowA)
    for (int colA = 0; colA < b.width; ++colA) {
      const Move a = makeMove(rowA, colA);
      if (!allowed(search.context(), b, a, rules.mover)) continue;
      b.placeStone(a, rules.mover);
      for (int rowB = 0; rowB < b.height; ++rowB)
        for (int colB = 0; colB < b.width; ++colB) {
          const Move m = makeMove(rowB, colB);
          if (credit + near[a] + near[m] + neighbours(a, m) < 2 || !allowed(search.context(), b, m, other)) continue;
          b.placeStone(m, other);
          add(list, search, rules, a, m);
          b.removeStone(m);
        }
      b.removeStone(a);
    }
}

void sortCandidates(CandidateList& list) {
  std::stable_sort(list.entries, list.entries + list.count,
                   [](const Candidate& x, const Candidate& y) { return x.score < y.score; });
}

int shortenedLength(int length, int depth, int32_t bestScore) {
  if (length >= kShortList) {
    const int cap = depth <= 4 ? kLongCaps[depth - 1] : std::max(kMinLongLength, length * 6 / 10);
    return std::min(length, cap);
  }
  // A close best lets the tail go a few at a time, longer lists faster.
  if (bestScore > kCloseScore) return length;
  if (length > 16) return std::max(length - 3, kMinShortLength);
  if (length > 8) return std::max(length - 2, kMinShortLength);
  if (length > 4) return std::max(length - 1, kMinShortLength);
  return length;
}

int narrow(AnalysisSearch& search, const NarrowingRules& rules, CandidateList& list,
           const std::function<void(int)>& afterPass) {
  if (list.count == 0) return 0;
  int last = 0;
  for (int depth = 1; !stopBeforeDepth(search.context(), search.board(), depth, false, kLookahead); ++depth) {
    search.startDepth(depth + rules.stones);
    const bool completed = runPass(search, rules, list, depth);
    search.mergeStatistics();
    if (!completed) break;
    const int length = list.count;
    sortCandidates(list);
    list.count = shortenedLength(length, depth, list.count > 0 ? list.entries[0].score : 0);
    last = depth;
    afterPass(depth);
  }
  return last;
}

}  // namespace zorva
