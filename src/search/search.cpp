#include "search/search.h"

#include <algorithm>
#include <optional>
#include <span>

#include "board/eval.h"
#include "board/forbid.h"
#include "protocol/engine_state.h"
#include "protocol/output.h"
#include "search/limits.h"
#include "search/movegen.h"
#include "search/searcher.h"
#include "search/tt.h"
#include "search/vcf.h"

namespace zorva {

namespace {

constexpr int32_t kRootWindow = 100000000;
constexpr int32_t kProvenNode = 9000000;   // beyond this a value is a proven result
constexpr int kPruneMargin = 64;           // static pruning margin per ply
constexpr int kPruneDepth = 5;
constexpr int kInternalDepthNull = 8;      // internal deepening when the table has no move
constexpr int kInternalDepthFull = 6;
constexpr int kReduceAfter = 3;            // moves searched at full depth before reductions
constexpr int kReduceMore = 10;
constexpr int kHistoryCap = 1 << 20;
constexpr int kRealtimeDepth = 8;
// Result labels of database records, for the player who made the last move.
constexpr int kDatabaseWon = 'w';
constexpr int kDatabaseLost = 'l';

int32_t winIn(int depth) { return kWin + depth; }

void updatePv(Searcher& s, int ply, Move m) {
  s.pv[ply][ply] = m;
  for (int i = ply + 1; i < s.pvLength[ply + 1]; ++i) s.pv[ply][i] = s.pv[ply + 1][i];
  s.pvLength[ply] = std::max(s.pvLength[ply + 1], ply + 1);
}

void rememberCutoff(Searcher& s, int ply, int depth, Move m) {
  if (s.killers[ply][0] != m) {
    s.killers[ply][1] = s.killers[ply][0];
    s.killers[ply][0] = m;
  }
  s.history[m] = std::min(s.history[m] + depth * depth, kHistoryCap);
}

int32_t leafValue(Searcher& s, int ply, Colour side) { return evaluate(s.board, side, s.scratch[ply]); }

// The only move when the opponent threatens five: block it.
int32_t forcedBlock(Searcher& s, int depth, int ply, int32_t alpha, int32_t beta, Colour side, Move block) {
  Board& b = s.board;
  if (b.rule == kRenju && side == BLACK && isForbidden(b, block)) return -winIn(depth - 1);
  b.placeStone(block, side);
  const int32_t value = -searchNode(s, depth - 1, ply + 1, -beta, -alpha, opponent(side));
  b.removeStone(block);
  if (engine.searchAborted) return 0;
  updatePv(s, ply, block);
  return value;
}

// The three best moves of a node, best first.
struct BestThree {
  int32_t values[3] = {-kRootWindow, -kRootWindow, -kRootWindow};
  Move moves[3] = {kNoMove, kNoMove, kNoMove};
  void add(int32_t value, Move m) {
    int i = 3;
    while (i > 0 && value > values[i - 1]) --i;
    for (int j = 2; j > i; --j) {
      values[j] = values[j - 1];
      moves[j] = moves[j - 1];
    }
    if (i < 3) {
      values[i] = value;
      moves[i] = m;
    }
  }
};

// The opening database near the root: positions proven won or lost end the
// search, and at the root's children a stored value deep enough stands for it.
bool probeDatabase(const Searcher& s, int depth, int ply, int32_t* value) {
  const Settings& settings = engine.settings;
  if (!settings.useDatabase || ply > settings.dbDepthWl || !engine.database.inUse()) return false;
  const Board& b = s.board;
  const db::Position position{b.rule, b.height, b.width, std::span<const int32_t>(b.moves, size_t(b.moveCount))};
  const std::optional<db::ResultFields> record = engine.database.probe(position);
  if (!record) return false;
  if (record->t == kDatabaseLost) {
    *value = winIn(depth);
    return true;
  }
  if (record->t == kDatabaseWon) {
    *value = -winIn(depth);
    return true;
  }
  if (ply <= 1 && depth > 0 && record->d >= depth) {
    *value = record->v;
    return true;
  }
  return false;
}

// At the root every reply the database knows is a candidate, however far it
// lies from the stones: the database may hold moves the generator would never try.
int addDatabaseMoves(Searcher& s, Colour side, ScoredMove* moves, int count) {
  const Settings& settings = engine.settings;
  if (!settings.useDatabase || settings.dbDepthWl < 1 || !engine.database.inUse()) return count;
  Board& b = s.board;
  bool listed[kCellSlots] = {};
  for (int i = 0; i < count; ++i) listed[moves[i].move] = true;
  int32_t line[kMaxStones + 1];
  std::copy(b.moves, b.moves + b.moveCount, line);
  for (int row = 0; row < b.height; ++row)
    for (int col = 0; col < b.width; ++col) {
      const Move m = makeMove(row, col);
      if (listed[m] || b.at(m) != EMPTY || engine.blockTable[m]) continue;
      line[b.moveCount] = m;
      const db::Position position{b.rule, b.height, b.width, std::span<const int32_t>(line, size_t(b.moveCount + 1))};
      if (engine.database.probe(position) && !(b.rule == kRenju && side == BLACK && isForbidden(b, m)))
        moves[count++] = {kTableMoveScore, m};
    }
  return count;
}

int reductionFor(int index, int depth, bool tactical) {
  if (tactical || index < kReduceAfter || depth < 3) return 0;
  return index >= kReduceMore && depth >= 6 ? 2 : 1;
}

// Searches one move with the principal-variation scheme: a null window
// first (reduced for late quiet moves), the full window when it may improve.
int32_t searchMove(Searcher& s, int depth, int ply, int32_t alpha, int32_t beta, Colour side, int index,
                   int reduction) {
  const Colour other = opponent(side);
  if (index == 0) return -searchNode(s, depth - 1, ply + 1, -beta, -alpha, other);
  int32_t value = -searchNode(s, depth - 1 - reduction, ply + 1, -alpha - 1, -alpha, other);
  if (value > alpha && reduction > 0 && !engine.searchAborted)
    value = -searchNode(s, depth - 1, ply + 1, -alpha - 1, -alpha, other);
  if (value > alpha && value < beta && beta - alpha > 1 && !engine.searchAborted)
    value = -searchNode(s, depth - 1, ply + 1, -beta, -alpha, other);
  return value;
}

}  // namespace

int32_t searchNode(Searcher& s, int depth, int ply, int32_t alpha, int32_t beta, Colour side) {
  Board& b = s.board;
  if (countNode(s)) return 0;
  s.pvLength[ply] = ply;
  const Colour other = opponent(side);
  if (int32_t known; probeDatabase(s, depth, ply, &known)) return known;

  // Step 1: immediate results from the threat sets.
  if (!b.threat(side, kFiveClass).empty()) return winIn(depth);
  Move block = kNoMove;
  const int opponentFives = b.threat(other, kFiveClass).firstOf(&block);
  if (opponentFives == 0 && hasPlayableOpenFour(b, side)) return winIn(depth);
  if (opponentFives > 0) return forcedBlock(s, depth, ply, alpha, beta, side, block);
  if (ply >= kMaxPly - 2) return leafValue(s, ply, side);

  // Step 2: the table, then the threat search.
  const bool nullWindow = beta - alpha == 1;
  const int stones = b.stoneCount();
  Move tableMoves[3];
  int tableCount = 0;
  const int32_t stored = transpositionTable.probe(b.hash, stones, depth, alpha, beta, side, tableMoves, 3, &tableCount);
  if (nullWindow && stored != kNoValue) return stored;
  if (const int32_t r = vcf(s, depth, side)) {
    const int32_t value = depth - kVcfDepthBase + r;
    transpositionTable.store(b.hash, stones, depth, value, kBoundExact, side);
    return value;
  }
  if (engine.searchAborted) return 0;

  // Step 3: leaves and static pruning.
  if (depth < 1) {
    s.minRemainingDepth = std::min(s.minRemainingDepth, depth);
    const int32_t value = leafValue(s, ply, side);
    transpositionTable.store(b.hash, stones, depth, value, kBoundExact, side);
    return value;
  }
  if (nullWindow && depth < kPruneDepth && engine.settings.cautionFactor < 2) {
    const int32_t e = leafValue(s, ply, side);
    const int32_t margin = kPruneMargin * std::max(1, depth);
    if (e + margin <= alpha) return alpha;
    if (beta <= e - margin) return beta;
  }

  // Step 4: internal deepening gives a move to try first when the table has none.
  if (tableCount == 0 && depth >= (nullWindow ? kInternalDepthNull : kInternalDepthFull)) {
    searchNode(s, depth - 2, ply, alpha, beta, side);
    if (engine.searchAborted) return 0;
    transpositionTable.probe(b.hash, stones, depth, alpha, beta, side, tableMoves, 3, &tableCount);
  }

  // Step 5: the moves.
  ScoredMove* moves = s.moveLists[ply];
  const MoveRequest request{side, tableMoves, tableCount, s.killers[ply], nullptr};
  const int count = generateMoves(s, request, moves);
  if (count == 0) return leafValue(s, ply, side);

  const int32_t alphaBefore = alpha;
  BestThree best;
  for (int i = 0; i < count; ++i) {
    const Move m = moves[i].move;
    const int reduction = reductionFor(i, depth, moves[i].score >= kKillerScore || isTacticalMove(b, m, side));
    b.placeStone(m, side);
    int32_t value = searchMove(s, depth, ply, alpha, beta, side, i, reduction);
    b.removeStone(m);
    if (engine.searchAborted) return 0;
    if (value > -kProvenNode && value < kProvenNode && value < alpha) value = alpha;
    best.add(value, m);
    if (value > alpha) {
      alpha = value;
      updatePv(s, ply, m);
    }
    if (value >= beta) {
      rememberCutoff(s, ply, depth, m);
      break;
    }
  }
  const int32_t value = best.values[0];
  const Bound bound = value >= beta ? kBoundLower : value > alphaBefore ? kBoundExact : kBoundUpper;
  transpositionTable.store(b.hash, stones, depth, value, bound, side, best.moves[0], best.moves[1], best.moves[2]);
  return value;
}

int32_t searchRoot(Searcher& s, int depth, Colour side) {
  Board& b = s.board;
  ThinkState& t = engine.think;
  s.pvLength[0] = 0;
  const bool realtime = depth >= kRealtimeDepth && engine.settings.showDetail && !engine.ponderActive;

  Move forced = kNoMove;
  ScoredMove* moves = s.moveLists[0];
  int count = 0;
  // Our five, else the block of theirs; a block black may not play loses
  // anyway, so then any legal move is as good.
  const bool mustMove = b.threat(side, kFiveClass).firstOf(&forced) ||
                        (b.threat(opponent(side), kFiveClass).firstOf(&forced) &&
                         !(b.rule == kRenju && side == BLACK && isForbidden(b, forced)));
  if (mustMove) {
    moves[count++] = {0, forced};
  } else {
    Move tableMoves[3] = {t.bestMove, kNoMove, kNoMove};
    int tableCount = t.bestMove != kNoMove && b.at(t.bestMove) == EMPTY ? 1 : 0;
    int found = 0;
    transpositionTable.probe(b.hash, b.stoneCount(), depth, -kRootWindow, kRootWindow, side, tableMoves + tableCount,
                             3 - tableCount, &found);
    const MoveRequest request{side, tableMoves, tableCount + found, s.killers[0], engine.blockTable};
    count = addDatabaseMoves(s, side, moves, generateMoves(s, request, moves));
  }
  t.singleReply = count == 1;
  if (realtime) sendLine("MESSAGE REALTIME REFRESH");

  int32_t alpha = -kRootWindow;
  for (int i = 0; i < count; ++i) {
    const Move m = moves[i].move;
    if (realtime) sendLine("MESSAGE REALTIME POS %d,%d", rowOf(m), colOf(m));
    b.placeStone(m, side);
    const int32_t value = searchMove(s, depth, 0, alpha, kRootWindow, side, i, 0);
    b.removeStone(m);
    if (engine.searchAborted) return alpha == -kRootWindow ? 0 : alpha;
    if (realtime) sendLine("MESSAGE REALTIME DONE %d,%d", rowOf(m), colOf(m));
    if (realtime && value < -kProvenNode) sendLine("MESSAGE REALTIME LOSE %d,%d", rowOf(m), colOf(m));
    if (value > alpha) {
      alpha = value;
      t.bestMove = m;
      updatePv(s, 0, m);
      if (realtime) {
        sendLine("MESSAGE REALTIME BEST %d,%d", rowOf(m), colOf(m));
        sendLine("MESSAGE REALTIME VAL %d", std::clamp(value, -10000, 10000));
      }
    }
  }
  if (count > 0) transpositionTable.store(b.hash, b.stoneCount(), depth, alpha, kBoundExact, side, t.bestMove);
  return count > 0 ? alpha : 0;
}

}  // namespace zorva
