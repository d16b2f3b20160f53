#include "search/search.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "board/eval.h"
#include "board/forbid.h"
#include "board/values.h"
#include "database/database.h"
#include "search/driver.h"
#include "search/limits.h"
#include "search/movegen.h"
#include "search/node.h"
#include "search/parallel.h"
#include "search/searcher.h"
#include "search/tt.h"
#include "search/vcf.h"

namespace zorva {

namespace {

constexpr int kPruneMargin = 64;  // static pruning margin per ply
constexpr int kPruneDepth = 5;
constexpr int kInternalDepthNull = 8;  // internal deepening when the table has no move
constexpr int kInternalDepthFull = 6;
constexpr int kInternalReduction = 2;
constexpr int kHistoryCap = 1 << 20;
constexpr int kLateMoveBase = 3;

// Reductions and extensions are in half plies of `extension`.
constexpr int kReduceFrom = 158;       // moves worth less are never reduced
constexpr int kWeakFourBelow = 164;    // a barely combined four ...
constexpr int kCrampedCell = 24;       // ... on a cell with little room
constexpr int kDeadComboBelow = 262;
constexpr int kReduction = -5;
constexpr int kWeakReduction = -10;
constexpr int kDeadReduction = -40;
constexpr int kThreatFrom = 8;         // moves from here to kReduceFrom may threaten a win
constexpr int kSmallThreatBelow = 34;
constexpr int kThreatExtension = 2;
constexpr int kSmallThreatExtension = 1;
constexpr int kMaxExtension = 4;
constexpr int kFullScale = 40;         // edge-table entry of an unscaled reduction
// A poor cell for the mover loses more of a reduced four's depth, a rich one less.
constexpr int kPoorCell = 18;
constexpr int kPoorerCell = 15;
constexpr int kPoorestCell = 12;
constexpr int kRichCell = 22;

// Reductions shrink toward the centre, where a wasted four costs the least.
constexpr int edgeWeight(int m) { return m <= 1 ? 40 : m == 2 ? 32 : m == 3 ? 26 : m == 4 ? 20 : 15; }
constexpr int kEdgeTableSide = 16;
constexpr auto kEdgeTable = [] {
  std::array<std::array<int16_t, kEdgeTableSide>, kEdgeTableSide> t{};
  for (int i = 0; i < kEdgeTableSide; ++i)
    for (int j = 0; j < kEdgeTableSide; ++j) t[i][j] = int16_t(edgeWeight(std::min(i, j)));
  return t;
}();

// Reduction factor in tenths by the node's evaluation: a side well ahead
// keeps its forcing moves at full depth, a side behind cuts them short.
int evalFactorTenths(int32_t e) {
  constexpr int32_t kBounds[] = {600, 500, 400, 300, 200, 100, -99, -199, -299, -499};
  constexpr int kTenths[] = {0, 1, 2, 4, 6, 8, 10, 11, 13, 16};
  for (int i = 0; i < 10; ++i)
    if (e >= kBounds[i]) return kTenths[i];
  return 18;
}

// Database record labels, for the player who made the last move.
constexpr int kDatabaseWon = 'w';
constexpr int kDatabaseLost = 'l';

int32_t winIn(int depth) { return kWin + depth; }

int32_t nodeEval(Node& n) {
  if (n.staticEval == kNoEval) n.staticEval = evaluate(n.s->board, n.side, n.s->scratch[n.ply]);
  return n.staticEval;
}

// The table converts proven values at the depth it is given, the effective
// one, while win values here count the plain depth; these map between the
// two scales (monotonically, so bounds compare alike on both).
int32_t toTableScale(int32_t v, const Node& n) { return fromStored(toStored(v, n.depth), n.effDepth); }
int32_t fromTableScale(int32_t v, const Node& n) {
  return v == kNoValue ? v : fromStored(toStored(v, n.effDepth), n.depth);
}

int32_t probeTable(const Node& n, Move* moves, int* found) {
  const Board& b = n.s->board;
  return fromTableScale(transpositionTable.probe(b.hash, b.stoneCount(), n.effDepth, toTableScale(n.alpha, n),
                                                 toTableScale(n.beta, n), n.side, moves, kTableMoves, found),
                        n);
}

void storeTable(const Node& n, int32_t value, Bound bound, Move m1 = kNoMove, Move m2 = kNoMove,
                Move m3 = kNoMove) {
  const Board& b = n.s->board;
  transpositionTable.store(b.hash, b.stoneCount(), n.effDepth, toTableScale(value, n), bound, n.side, m1, m2, m3);
}

// A dead four whose only other threat is a three with one way on: once the
// four is blocked nothing is left, so the move is mostly a wasted threat.
bool deadCombination(uint32_t word) {
  int deadFours = 0, oneWayThrees = 0, others = 0;
  for (int d = 0; d < kDirections; ++d) {
    const uint32_t c = word >> (4 * d) & 15;
    deadFours += c == kCodeFourDead;
    oneWayThrees += c == kCodeThreeOne;
    others += c >= kCodeThreeTwo && c != kCodeFourDead;
  }
  return deadFours == 1 && oneWayThrees == 1 && others == 0;
}

// A combined four that the node's threat search found not to win.
int reduction(Node& n, Move m, uint32_t word, int pv) {
  const Board& b = n.s->board;
  const int c = b.info[m].cellValue[colourIndex(n.side)];
  int r = pv < kDeadComboBelow && deadCombination(word) ? kDeadReduction
          : pv < kWeakFourBelow && c < kCrampedCell    ? kWeakReduction
                                                        : kReduction;
  const int row = std::min(rowOf(m), b.height - 1 - rowOf(m)), col = std::min(colOf(m), b.width - 1 - colOf(m));
  r = r * kEdgeTable[std::min(row, kEdgeTableSide - 1)][std::min(col, kEdgeTableSide - 1)] / kFullScale;
  if (r != 0) {
    if (c < kPoorCell) r = r * 11 / 10;
    if (c < kPoorerCell) r = r * 11 / 10;
    if (c < kPoorestCell) r = r * 13 / 10;
    if (c > kRichCell) r = r * 9 / 10;
    r = r * evalFactorTenths(nodeEval(n)) / 10;
  }
  return n.opponentFive ? r / 4 : r;
}

// The child's extension: reduced for combined fours, extended on full-window
// nodes for moves that threaten a win by continuous fours.
int childExtension(Node& n, Move m) {
  if (n.ply == 0) return 0;  // the root's moves are searched alike
  Board& b = n.s->board;
  const uint32_t word = b.info[m].patternWord[colourIndex(n.side)] & 0xFFFF;
  const int pv = moveValue[word];
  if (pv >= kReduceFrom) return n.extension + reduction(n, m, word, pv);
  if (n.nullWindow || pv < kThreatFrom || n.depth < -(3 * n.s->ctx->think->currentDepth) / 2) return n.extension;
  b.placeStone<Update::Light>(m, n.side);
  const bool threatens = vcf(*n.s, n.depth - 1, n.side) != 0;
  b.removeStone<Update::Light>(m);
  if (!threatens) return n.extension;
  const int bonus = pv < kSmallThreatBelow ? kSmallThreatExtension : kThreatExtension;
  return std::min(n.extension + bonus, kMaxExtension);
}

void rememberCutoff(Searcher& s, const Node& n, Move m) {
  Killer* killers = s.killers[n.ply];
  const uint32_t count = s.board.info[m].patternWord[colourIndex(n.side)] & 0xFFFF;
  if (killers[0].move != m) killers[1] = killers[0];
  killers[0] = {count, m};
  s.history[n.ply][m] = std::min(s.history[n.ply][m] + std::max(n.depth, 1), kHistoryCap);
}

// The opening database near the root: positions proven won or lost end the
// search, and at the root's children a stored value deep enough stands for it.
bool probeDatabase(const Node& n, int32_t* value) {
  const SearchContext& ctx = *n.s->ctx;
  if (!ctx.settings.useDatabase || n.ply > ctx.settings.dbDepthWl || !ctx.database || !ctx.database->inUse())
    return false;
  const Board& b = n.s->board;
  const db::Position position{b.rule, b.height, b.width, std::span<const int32_t>(b.moves, size_t(b.moveCount))};
  const std::optional<db::ResultFields> record = ctx.database->probe(position);
  if (!record) return false;
  if (record->t == kDatabaseLost) {
    *value = winIn(n.depth);
    return true;
  }
  if (record->t == kDatabaseWon) {
    *value = -winIn(n.depth);
    return true;
  }
  if (n.ply <= 1 && n.effDepth > 0 && record->d >= n.effDepth) {
    *value = record->v;
    return true;
  }
  return false;
}

// The only move when the opponent threatens five: block it (black may not
// block on a forbidden cell, and then loses).
int32_t forcedBlock(Node& n, Move block) {
  Board& b = n.s->board;
  if (b.rule == kRenju && n.side == BLACK && isForbidden(b, block)) return -winIn(n.depth - 1);
  const int32_t value = searchChild(n, block, 0, n.alpha);
  if (n.s->ctx->aborted || abandoned(n.s->activeSplit)) return 0;
  updatePv(*n.s, n.ply, block);
  return value;
}

// A node with no move to search: a full board is drawn; a side that may
// play none of the answers to the opponent's open four point (Renju black,
// whose defences are all forbidden) has lost; else only cells too far from
// the stones to matter are left, worth what the position is.
int32_t noMoveValue(Node& n) {
  Board& b = n.s->board;
  bool full = true;
  for (int row = 0; row < b.height && full; ++row)
    for (int col = 0; col < b.width && full; ++col) full = b.at(makeMove(row, col)) != EMPTY;
  if (full) return 0;
  if (hasPlayableOpenFour(b, opponent(n.side))) return -winIn(n.depth - 1);
  return nodeEval(n);
}

// Nodes keep only the best-ordered quiet moves, more the deeper they are: a
// cell that neither threatens nor blocks rarely refutes anything. Full-window
// nodes too: searching all their quiet moves made them half of the tree.
// The threat stages and the killers are always kept.
int candidateLimit(const Node& n, const ScoredMove* moves, int count) {
  const int urgent = int(std::count_if(moves, moves + count, [](const ScoredMove& m) { return m.score >= kKillerScore; }));
  return std::min(count, urgent + kLateMoveBase + n.effDepth * (n.effDepth + 1) / 2);
}

// The table's moves that are still playable here.
int usableTableMoves(const SearchContext& ctx, Board& b, Colour side, Move* moves, int count) {
  int kept = 0;
  for (int i = 0; i < count; ++i)
    if (playable(ctx, b, moves[i], side)) moves[kept++] = moves[i];
  return kept;
}

// Searches the node's moves; returns true when the search must give up
// (aborted, or the work was abandoned by a cut-off elsewhere).
bool searchMoves(Node& n, const Move* tableMoves, int tableCount) {
  Searcher& s = *n.s;
  for (int i = 0; i < tableCount; ++i) {
    const int32_t value = searchChild(n, tableMoves[i], n.searched, n.alpha);
    if (s.ctx->aborted || abandoned(s.activeSplit)) return true;
    if (recordResult(n, tableMoves[i], value)) return false;
  }
  ScoredMove* moves = s.moveLists[n.ply];
  const MoveRequest request{n.side, n.ply, tableMoves, tableCount, s.killers[n.ply], nullptr};
  const int generated = generateMoves(s, request, moves);
  const int count = candidateLimit(n, moves, generated);
  for (int i = 0; i < count; ++i) {
    if (n.searched > 0 && i + 1 < count && canSplit(n)) {
      sortMoves(moves + i, generated - i);
      const SplitResult split = splitNode(n, moves + i, count - i);
      if (split != SplitResult::NoHelper) return split == SplitResult::Abandoned;
    }
    pickBest(moves, i, generated);
    const int32_t value = searchChild(n, moves[i].move, n.searched, n.alpha);
    if (s.ctx->aborted || abandoned(s.activeSplit)) return true;
    if (recordResult(n, moves[i].move, value)) return false;
  }
  return false;
}

}  // namespace

void BestThree::add(int32_t value, Move m) {
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

bool isHeuristic(int32_t value) { return value > -kProvenNode && value < kProvenNode; }

void updatePv(Searcher& s, int ply, Move m) {
  s.pv[ply][ply] = m;
  for (int i = ply + 1; i < s.pvLength[ply + 1]; ++i) s.pv[ply][i] = s.pv[ply + 1][i];
  s.pvLength[ply] = std::max(s.pvLength[ply + 1], ply + 1);
}

int32_t searchChild(Node& n, Move m, int index, int32_t alpha) {
  Searcher& s = *n.s;
  Board& b = s.board;
  const Colour other = opponent(n.side);
  transpositionTable.prefetch(b.hashAfter(m, n.side), other);
  const int extension = childExtension(n, m);
  b.placeStone(m, n.side);
  int32_t value;
  if (index == 0 || n.nullWindow) {
    value = -searchNode(s, n.depth - 1, n.ply + 1, -n.beta, -alpha, other, extension);
  } else {
    value = -searchNode(s, n.depth - 1, n.ply + 1, -alpha - 1, -alpha, other, extension);
    if (value > alpha && value < n.beta && !n.s->ctx->aborted)
      value = -searchNode(s, n.depth - 1, n.ply + 1, -n.beta, -alpha, other, extension);
  }
  b.removeStone(m);
  return value;
}

bool recordResult(Node& n, Move m, int32_t value) {
  ++n.searched;
  if (isHeuristic(value) && value < n.alpha) value = n.alpha;
  n.best.add(value, m);
  if (value > n.alpha) {
    n.alpha = value;
    updatePv(*n.s, n.ply, m);
  }
  if (value < n.beta) return false;
  rememberCutoff(*n.s, n, m);
  return true;
}

int32_t searchNode(Searcher& s, int depth, int ply, int32_t alpha, int32_t beta, Colour side, int extension) {
  Board& b = s.board;
  if (countNode(s)) return 0;
  if (ply >= kMaxPly - 2) return evaluate(b, side, s.scratch[ply]);
  s.pvLength[ply] = ply;
  const Colour other = opponent(side);
  Node n(&s, depth, ply, extension, alpha, beta, side);
  if (int32_t known; probeDatabase(n, &known)) return known;

  // Immediate results from the threat sets.
  if (!b.threat(side, kFiveClass).empty()) return winIn(depth);
  Move block = kNoMove;
  n.opponentFive = b.threat(other, kFiveClass).firstOf(&block) > 0;
  if (!n.opponentFive && hasPlayableOpenFour(b, side)) return winIn(depth);
  if (n.opponentFive) return forcedBlock(n, block);

  // The table, then the threat search, the leaf and static pruning.
  Move tableMoves[kTableMoves];
  int tableCount = 0;
  const int32_t stored = probeTable(n, tableMoves, &tableCount);
  if (n.nullWindow && stored != kNoValue) return stored;
  if (const int32_t r = vcf(s, depth, side)) {
    const int32_t value = depth - kVcfDepthBase + r;
    storeTable(n, value, kBoundExact);
    return value;
  }
  if (s.ctx->aborted) return 0;
  if (depth + ((extension & ~3) >> 1) < 1) {
    s.minRemainingDepth = std::min(s.minRemainingDepth, depth);
    const int32_t value = nodeEval(n);
    storeTable(n, value, kBoundExact);
    return value;
  }
  if (n.nullWindow && n.effDepth < kPruneDepth && n.s->ctx->settings.cautionFactor < 2) {
    const int32_t e = nodeEval(n), margin = kPruneMargin * std::max(1, n.effDepth);
    if (e + margin <= alpha) return alpha;
    if (beta <= e - margin) return beta;
  }

  // Internal deepening gives a move to try first when the table has none.
  tableCount = usableTableMoves(*s.ctx, b, side, tableMoves, tableCount);
  if (tableCount == 0 && n.effDepth >= (n.nullWindow ? kInternalDepthNull : kInternalDepthFull)) {
    const int32_t inner = searchNode(s, depth - kInternalReduction, ply, alpha, beta, side, extension);
    if (s.ctx->aborted || abandoned(s.activeSplit)) return 0;
    if (n.nullWindow && inner >= beta && inner > kProvenNode) {
      storeTable(n, inner, kBoundLower, s.pv[ply][ply]);
      return inner;
    }
    probeTable(n, tableMoves, &tableCount);
    tableCount = usableTableMoves(*s.ctx, b, side, tableMoves, tableCount);
    s.pvLength[ply] = ply;
  }

  if (searchMoves(n, tableMoves, tableCount)) return 0;
  if (n.searched == 0) return noMoveValue(n);
  const int32_t value = n.best.values[0];
  const Bound bound = value >= beta ? kBoundLower : value > alpha ? kBoundExact : kBoundUpper;
  storeTable(n, value, bound, n.best.moves[0], n.best.moves[1], n.best.moves[2]);
  return value;
}

}  // namespace zorva
