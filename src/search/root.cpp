// The root search: the node search's skeleton with the root's own move list
// (forced moves, the last best move, database replies), the REALTIME lines
// and the drop flags that lengthen a turn.
#include <algorithm>
#include <cstdlib>
#include <span>

#include "board/forbid.h"
#include "database/database.h"
#include "search/driver.h"
#include "search/movegen.h"
#include "search/node.h"
#include "search/search.h"
#include "search/searcher.h"
#include "search/tt.h"
#include "search/vct.h"

namespace zorva {

namespace {

constexpr int kRealtimeDepth = 8;
constexpr int kRootVctDepth = 2;  // the first iteration only has to find a move
constexpr int kRootVctNodes = 20000;
constexpr int kRootVctThrees = 8;
constexpr int32_t kBigDrop = 968;  // a fall this large is a refutation, not noise
constexpr int32_t kDropFloor = 30;

// Tested between root moves against the last depth's value: flag A marks a
// collapse, flag B a fall by a quarter of the value; either gives the turn
// more time at once, so the running depth can still find a better move.
void testDrops(ThinkState& t, int32_t bestSoFar, int32_t reference) {
  if (t.fixedBudget || !isHeuristic(bestSoFar) || !isHeuristic(reference)) return;
  const bool collapse = !t.dropFlagA && bestSoFar < reference - kBigDrop;
  const bool fall = !t.dropFlagB && bestSoFar < reference - std::abs(reference) / 4 - kDropFloor;
  if (collapse) t.dropFlagA = 1;
  if (fall) t.dropFlagB = 1;
  if (collapse || fall) t.timeBudget = t.dropBudgets[t.dropFlagA | t.dropFlagB << 1];
}

// At the root every reply the database knows is a candidate, however far it
// lies from the stones: the database may hold moves the generator would never try.
int addDatabaseMoves(Searcher& s, Colour side, ScoredMove* moves, int count) {
  const SearchContext& ctx = *s.ctx;
  if (!ctx.settings.useDatabase || ctx.settings.dbDepthWl < 1 || !ctx.database || !ctx.database->inUse()) return count;
  Board& b = s.board;
  bool listed[kCellSlots] = {};
  for (int i = 0; i < count; ++i) listed[moves[i].move] = true;
  int32_t line[kMaxStones + 1];
  std::copy(b.moves, b.moves + b.moveCount, line);
  for (int row = 0; row < b.height; ++row)
    for (int col = 0; col < b.width; ++col) {
      const Move m = makeMove(row, col);
      if (listed[m] || !choosable(ctx, b, m, side)) continue;
      line[b.moveCount] = m;
      const db::Position position{b.rule, b.height, b.width, std::span<const int32_t>(line, size_t(b.moveCount + 1))};
      if (ctx.database->probe(position)) moves[count++] = {kTableMoveScore, m};
    }
  return count;
}

// The first cell of a threat set the engine may choose for `side`, or kNoMove.
Move firstUsable(const SearchContext& ctx, Board& b, ThreatClass c, Colour side) {
  Move found = kNoMove;
  b.threat(side, c).forEach([&](Move m) {
    if (!choosable(ctx, b, m, side)) return true;
    found = m;
    return false;
  });
  return found;
}

bool isExcluded(std::span<const Move> excluded, Move m) {
  return std::find(excluded.begin(), excluded.end(), m) != excluded.end();
}

// Every playable cell not ruled out, in board order.
int everyCell(const SearchContext& ctx, Board& b, Colour side, std::span<const Move> excluded, ScoredMove* moves) {
  int count = 0;
  for (int row = 0; row < b.height; ++row)
    for (int col = 0; col < b.width; ++col) {
      const Move m = makeMove(row, col);
      if (choosable(ctx, b, m, side) && !isExcluded(excluded, m)) moves[count++] = {0, m};
    }
  return count;
}

// Drops the moves an analysis ruled out, keeping the order; a list left
// empty widens to every playable cell.
int filterMoves(Searcher& s, Colour side, const RootFilter* filter, ScoredMove* moves, int count) {
  if (!filter) return count;
  const std::span<const Move> excluded = filter->excluded;
  const int kept = int(std::remove_if(moves, moves + count, [&](const ScoredMove& m) {
                         return isExcluded(excluded, m.move);
                       }) - moves);
  return kept > 0 ? kept : everyCell(*s.ctx, s.board, side, excluded, moves);
}

// The root's moves: our five, else the block of theirs (a block the engine
// may not play loses anyway, so then any move is as good), else our open
// four, the fastest sure win; else the previous best, the table's moves and
// the generated ones. Cells the engine may not choose are never forced.
int rootMoves(Searcher& s, int depth, Colour side, ScoredMove* moves) {
  Board& b = s.board;
  const SearchContext& ctx = *s.ctx;
  const ThinkState& t = *ctx.think;
  Move forced = kNoMove;
  if ((forced = firstUsable(ctx, b, kFiveClass, side)) != kNoMove ||
      (b.threat(opponent(side), kFiveClass).firstOf(&forced) && choosable(ctx, b, forced, side)) ||
      (b.threat(opponent(side), kFiveClass).empty() &&
       (forced = firstUsable(ctx, b, kOpenFourClass, side)) != kNoMove)) {
    moves[0] = {0, forced};
    return 1;
  }
  Move first[kTableMoves + 1];
  int firstCount = 0;
  if (t.bestMove != kNoMove && choosable(ctx, b, t.bestMove, side)) first[firstCount++] = t.bestMove;
  Move stored[kTableMoves];
  int found = 0;
  transpositionTable.probe(b.hash, b.stoneCount(), depth, -kRootWindow, kRootWindow, side, stored, kTableMoves,
                           &found);
  for (int i = 0; i < found; ++i)
    if (choosable(ctx, b, stored[i], side) && std::find(first, first + firstCount, stored[i]) == first + firstCount)
      first[firstCount++] = stored[i];
  int count = 0;
  for (int i = 0; i < firstCount; ++i) moves[count++] = {kTableMoveScore - i, first[i]};
  const MoveRequest request{side, 0, first, firstCount, s.killers[0], ctx.blockTable};
  const int generated = generateMoves(s, request, moves + count);
  sortMoves(moves + count, generated);
  count += generated;
  // On a crowded board no empty cell may touch a line either side can use;
  // the turn must still be a move the engine may play.
  if (count == 0) count = everyCell(ctx, b, side, {}, moves);
  return addDatabaseMoves(s, side, moves, count);
}

}  // namespace

int32_t searchRoot(Searcher& s, int depth, Colour side, const RootFilter* filter) {
  ThinkState& t = *s.ctx->think;
  s.pvLength[0] = 0;
  const bool realtime = depth >= kRealtimeDepth && s.ctx->settings.realtime;
  const int32_t reference = t.rootValue;
  ScoredMove* moves = s.moveLists[0];
  int count = filterMoves(s, side, filter, moves, rootMoves(s, depth, side, moves));
  const std::span<const Move> excluded = filter ? filter->excluded : std::span<const Move>();
  // A search stopped before its first move finishes still plays a legal one.
  if (t.bestMove == kNoMove && count > 0) t.bestMove = moves[0].move;
  if (count > 1 && depth >= kRootVctDepth) {
    // A win by continuous threats ends the search: the first threat is played.
    Move win = kNoMove;
    const int plies = vctPlies(s, side, kRootVctNodes, kRootVctThrees, &win);
    if (plies >= 0 && choosable(*s.ctx, s.board, win, side) && !isExcluded(excluded, win)) {
      t.bestMove = win;
      s.pv[0][0] = win;
      s.pvLength[0] = 1;
      return kWin + depth - plies;
    }
    count = keepThreatDefences(s, side, moves, count, kRootVctNodes, kRootVctThrees);
  }
  t.singleReply = count == 1;
  SearchObserver& observer = *s.ctx->observer;
  if (realtime) observer.rootPass();

  Node n(&s, depth, 0, 0, -kRootWindow, kRootWindow, side);
  for (int i = 0; i < count; ++i) {
    const Move m = moves[i].move;
    if (realtime) observer.rootMoveStarted(m);
    const int32_t value = searchChild(n, m, i, n.alpha);
    if (s.ctx->aborted) return n.searched > 0 ? n.alpha : 0;
    if (realtime) observer.rootMoveDone(m, value < -kProvenNode);
    const int32_t before = n.alpha;
    recordResult(n, m, value);
    testDrops(t, n.alpha, reference);
    if (n.alpha > before) {
      t.bestMove = m;
      if (realtime) observer.rootBest(m, value, s.pv[0], s.pvLength[0]);
    }
  }
  if (count == 0) return 0;
  if (excluded.empty())
    transpositionTable.store(s.board.hash, s.board.stoneCount(), depth, n.alpha, kBoundExact, side, n.best.moves[0],
                             n.best.moves[1], n.best.moves[2]);
  return n.alpha;
}

}  // namespace zorva
