#include "search/driver.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iterator>

#include "search/think.h"
#include "search/tt.h"

namespace zorva {

namespace {

constexpr int32_t kRenjuBias = 75;          // black's edge under Renju, taken out of the stability test
constexpr int32_t kUnstableValue = 149;
constexpr int32_t kRootWindow = 100000000;
constexpr int32_t kProvenRoot = 9999031;
constexpr int kEarlyStopDepth = 4;
constexpr int kStableDepths = 4;
constexpr int kNodeLimitOff = 1000000000;
constexpr int32_t kDrawRenjuBias = 125;

bool nodeLimitOn(int32_t maxNode) { return maxNode != -1; }

// True when a budget fits an even share of the time left for the rest of the board.
bool fitsEvenShare(const Settings& s, int32_t budget, const Board& board) {
  const int32_t cellsLeft = board.width * board.height - board.stoneCount() + 1;
  return budget <= s.timeLeft / std::max(cellsLeft, 1);
}

struct Deepening {
  int lastDone;
  int32_t lastValue;
  bool plentiful;
};

void setDepthBudget(const Settings& s, ThinkState& t, Colour side, const Board& board, Deepening& run) {
  int32_t v = t.rootValue;
  if (s.rule == 2) v += side == BLACK ? -kRenjuBias : kRenjuBias;
  t.valueUnstable = std::abs(v) > kUnstableValue;
  t.timeBudget = thinkBudget(s, Budget::kTurn, 1 + t.valueUnstable + t.dropFlagA + t.dropFlagB);
  for (int flags = 0; flags < 4; ++flags)
    t.dropBudgets[flags] = thinkBudget(s, Budget::kTurn, 1 + t.valueUnstable + (flags & 1) + (flags >> 1));
  if (fitsEvenShare(s, t.timeBudget, board)) run.plentiful = true;
}

void reportDepth(const SearchContext& ctx, int depth, int32_t value, const Board& board, bool aborted) {
  const ThinkState& t = *ctx.think;
  ctx.observer->depthDone(
      {depth, t.minRemainingDepth, value, nowMs() - t.turnStart, t.nodeCount, t.bestMove, board.height, aborted});
}

// A turn's deepening recomputes its budget at every depth and may stop
// early; pondering keeps its budget; a decision also ignores the
// stable-move and single-reply rules and runs until proven or out of time.
enum class Deepen { Turn, Ponder, Decision };

// Iterative deepening; returns what the last depth counted as done left.
Deepening deepen(SearchBackend& backend, const Board& board, Colour side, bool quiet, Deepen kind = Deepen::Turn) {
  SearchContext& ctx = backend.context();
  const Settings& s = *ctx.engineSettings;
  ThinkState& t = *ctx.think;
  t.fixedBudget = kind != Deepen::Turn;
  Deepening run{s.startDepth - 1, t.rootValue, fitsEvenShare(s, t.timeBudget, board)};
  for (int depth = s.startDepth; !stopBeforeDepth(ctx, board, depth, run.plentiful); ++depth) {
    t.currentDepth = depth;
    t.singleReply = 0;
    t.previousBestMove = t.bestMove;
    if (kind == Deepen::Turn) setDepthBudget(s, t, side, board, run);
    backend.startDepth();
    const int32_t value = backend.searchRoot(depth, side);
    backend.mergeStatistics();
    const bool report = !quiet && depth > kEarlyStopDepth && s.showDetail;
    if (ctx.aborted) {
      if (value != 0) {
        t.bestLine = backend.principalVariation();
        if (report) reportDepth(ctx, depth, value, board, true);
        run = {depth, value, run.plentiful};
      } else {
        t.bestMove = t.previousBestMove;
      }
      t.aborted = true;
      return run;
    }
    t.bestLine = backend.principalVariation();
    if (report) reportDepth(ctx, depth, value, board, false);
    run = {depth, value, run.plentiful};
    if (value > kProvenRoot || value < -kProvenRoot) return run;
    if (kind != Deepen::Decision && t.singleReply && depth > kEarlyStopDepth && s.earlyStop) return run;
    t.rootValue = value;
    if (t.bestMove == t.previousBestMove) {
      ++t.stableCount;
      const int64_t elapsed = nowMs() - t.turnStart;
      if (kind != Deepen::Decision && t.stableCount > kStableDepths && !run.plentiful && t.timeBudget < 8 * elapsed &&
          nodeLimitOn(s.maxNode))
        return run;
    } else {
      t.stableCount = 0;
    }
    if (fitsEvenShare(s, t.timeBudget, board)) run.plentiful = true;
  }
  return run;
}

// Starts the clock, prepares the search and deepens on `board` for the side
// to move; the caller has set the budget and reset the counters.
Deepening clockedDeepening(SearchBackend& backend, const Board& board, bool quiet, Deepen kind) {
  ThinkState& t = *backend.context().think;
  t.turnStart = nowMs();
  t.bestMove = kNoMove;
  backend.prepare();
  const Colour side = board.sideToMove();
  t.rootValue = backend.evaluate(side);
  const Deepening run = deepen(backend, board, side, quiet, kind);
  t.elapsedMs = nowMs() - t.turnStart;
  return run;
}

// The threat search that finds a quick win knows nothing of the cells the
// user took away.
Move ifChoosable(const SearchContext& ctx, const Board& board, Move m) {
  return mayChoose(ctx, board, m) ? m : kNoMove;
}

void resetCounters(SearchContext& ctx) {
  ThinkState& t = *ctx.think;
  t.stableCount = 0;
  t.valueUnstable = 0;
  t.dropFlagA = 0;
  t.dropFlagB = 0;
  t.nodeCount = 0;
  t.minRemainingDepth = 0;
  t.aborted = false;
  ctx.aborted = 0;
}

void report(const SearchContext& ctx, const Board& board) {
  const ThinkState& t = *ctx.think;
  TurnSummary summary;
  summary.depth = t.currentDepth;
  summary.minRemainingDepth = t.minRemainingDepth;
  summary.elapsedMs = t.elapsedMs;
  summary.nodes = t.nodeCount;
  summary.value = t.finalValue;
  summary.aborted = t.aborted;
  summary.showDetail = ctx.engineSettings->showDetail != 0;
  summary.boardWidth = board.width;
  summary.boardHeight = board.height;
  ctx.observer->turnDone(summary, t.bestLine, ctx.blockTable);
}

}  // namespace

bool stopBeforeDepth(const SearchContext& ctx, const Board& board, int depth, bool plentiful, int extraStones) {
  const Settings& s = *ctx.engineSettings;
  const ThinkState& t = *ctx.think;
  const int64_t elapsed = nowMs() - t.turnStart;
  const bool stopAsked = stopRequested(ctx);
  const bool outOfTime = t.timeBudget <= 4 * elapsed && !plentiful;
  const bool boardFull = depth + extraStones + board.stoneCount() > board.width * board.height;
  if (depth != 1 && (outOfTime || boardFull || stopAsked) && (nodeLimitOn(s.maxNode) || stopAsked))
    return true;
  if (nodeLimitOn(s.maxNode) && s.maxNode < kNodeLimitOff && int64_t(s.maxNode) <= (t.nodeCount >> 10) * 4)
    return true;
  return depth > s.maxDepth;
}

int64_t nowMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

int32_t thinkBudget(const Settings& s, Budget kind, int shares) {
  struct Share {
    int32_t of;  // the part of the time left
    bool increment;  // half the increment on top
  };
  constexpr Share kShares[] = {{24, true}, {16, false}, {16, false}, {8, true}, {4, false}, {16, false}};
  static_assert(std::size(kShares) == size_t(Budget::kBalance) + 1, "one share for each kind of think");
  const Share share = kShares[int(kind)];
  const int64_t time = int64_t(shares) * s.timeLeft / share.of + (share.increment ? s.timeIncrement / 2 : 0);
  return int32_t(std::min<int64_t>(time, s.timeoutTurn));
}

int32_t runDecisionSearch(SearchBackend& backend, const Board& board) {
  SearchContext& ctx = backend.context();
  ThinkState& t = *ctx.think;
  t.timeBudget = thinkBudget(*ctx.engineSettings, Budget::kDecision);
  resetCounters(ctx);
  const Deepening run = clockedDeepening(backend, board, true, Deepen::Decision);
  t.currentDepth = run.lastDone;
  t.finalValue = run.lastValue;
  return run.lastValue;
}

void runPonder(SearchBackend& backend, const Board& board) {
  SearchContext& ctx = backend.context();
  ThinkState& t = *ctx.think;
  const Move bestMove = t.bestMove;
  const int32_t currentDepth = t.currentDepth, finalValue = t.finalValue;
  const int32_t drawAcceptable = t.drawAcceptable;
  const Line bestLine = t.bestLine;
  const bool aborted = t.aborted;
  const int64_t elapsedMs = t.elapsedMs;
  t.timeBudget = thinkBudget(*ctx.engineSettings, Budget::kPonder);
  resetCounters(ctx);
  clockedDeepening(backend, board, true, Deepen::Ponder);
  t.elapsedMs = elapsedMs;
  t.bestMove = bestMove;
  t.currentDepth = currentDepth;
  t.finalValue = finalValue;
  t.drawAcceptable = drawAcceptable;
  t.bestLine = bestLine;
  t.aborted = aborted;
}

namespace {

// What kind of turn is played: the engine's own, or a checkmate think,
// which has a budget of its own, deepens as a decision does (no stable-move
// or single-reply stop) and never judges a draw.
enum class TurnKind { Normal, Checkmate };

Move playTurn(SearchBackend& backend, const Board& board, bool quiet, TurnKind kind) {
  SearchContext& ctx = backend.context();
  const Settings& s = *ctx.engineSettings;
  ThinkState& t = *ctx.think;
  const Colour side = board.sideToMove();
  t.timeBudget = thinkBudget(s, kind == TurnKind::Normal ? Budget::kTurn : Budget::kCheckmate);
  resetCounters(ctx);
  // A checkmate think offers no draw: its value says nothing of one.
  if (kind == TurnKind::Checkmate) t.drawAcceptable = 0;

  // A win proven last turn is played out without a search.
  const Move provenWin = board.stoneCount() > 0 && t.builtRule != -1 && t.finalValue - t.currentDepth >= kWin
                             ? ifChoosable(ctx, board, backend.quickWinMove(side))
                             : kNoMove;
  if (board.stoneCount() == 0) {
    t.bestMove = emptyBoardMove(ctx, board);
    t.elapsedMs = 0;
  } else if (provenWin != kNoMove) {
    t.bestMove = provenWin;
    t.elapsedMs = 0;
  } else {
    const Deepening run =
        clockedDeepening(backend, board, quiet, kind == TurnKind::Normal ? Deepen::Turn : Deepen::Decision);
    t.currentDepth = run.lastDone;
    t.finalValue = run.lastValue;
    if (t.finalValue - t.currentDepth >= kWin) {
      const Move win = ifChoosable(ctx, board, backend.quickWinMove(side));
      if (win != kNoMove) t.bestMove = win;
    }
    if (kind == TurnKind::Normal) updateDrawAcceptance(ctx, t.finalValue, side, t.singleReply, board);
    // A turn cut short before any depth finished still has to move.
    if (!mayChoose(ctx, board, t.bestMove)) t.bestMove = emptyBoardMove(ctx, board);
  }
  if (!quiet) report(ctx, board);
  return t.bestMove;
}

}  // namespace

Move runTurnDriver(SearchBackend& backend, const Board& board, bool quiet) {
  return playTurn(backend, board, quiet, TurnKind::Normal);
}

Move runCheckmateDriver(SearchBackend& backend, const Board& board, bool quiet) {
  return playTurn(backend, board, quiet, TurnKind::Checkmate);
}

void updateDrawAcceptance(SearchContext& ctx, int32_t v, Colour side, bool singleReply, const Board& board) {
  if (ctx.engineSettings->rule == 2) v += side == BLACK ? -kDrawRenjuBias : kDrawRenjuBias;
  const int stones = board.stoneCount(), cells = board.width * board.height;
  int32_t accept = 0;
  if (v >= 200)
    accept = 0;
  else if (!singleReply && (v <= -100 || (v < -49 && stones >= 20)))
    accept = 1;
  else if (!singleReply)
    accept = (v < 26 && stones >= cells / 4) || (v < 51 && stones >= cells / 3) || (v < 76 && stones >= cells / 2);
  ctx.think->drawAcceptable = accept;
}

}  // namespace zorva
