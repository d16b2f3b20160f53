#pragma once
// The turn driver: iterative deepening over the root search under the time
// and node limits, the choice of the move, and the end-of-turn report.
#include <cstdint>

#include "board/board.h"
#include "search/context.h"
#include "search/relaxed.h"
#include "search/settings.h"
#include "search/report.h"

namespace zorva {

// What the driver keeps between depths and between turns.
struct ThinkState {
  Relaxed<int32_t> timeBudget{10000};  // ms for this turn; the search polls it
  Relaxed<int64_t> turnStart{0};       // clock at the start of the search
  int64_t elapsedMs = 0;
  int32_t currentDepth = 0;
  Move bestMove = kNoMove;  // written by the root search
  Move previousBestMove = kNoMove;
  int32_t stableCount = 0;
  int32_t rootValue = 0;
  int32_t finalValue = 0;
  int32_t singleReply = 0;  // the root search found one move left
  int32_t valueUnstable = 0;
  Relaxed<int32_t> dropFlagA{0};  // set by the root search when the value drops
  Relaxed<int32_t> dropFlagB{0};
  // The budget the root takes at once when it sets drop flags, by flags (A
  // in bit 0, B in bit 1); set before each depth of a turn.
  int32_t dropBudgets[4] = {};
  Relaxed<int64_t> nodeCount{0};
  int32_t minRemainingDepth = 0;
  Line bestLine;
  int32_t builtRule = -1;  // rule the boards were last set up for; -1 for a new position
  Relaxed<int32_t> drawAcceptable{0};  // zvdraw reads it while a think runs
  bool aborted = false;  // the last turn's deepening was cut short
  bool fixedBudget = false;  // pondering and decisions keep their first budget
};

// The search as the driver sees it.
class SearchBackend {
 public:
  virtual ~SearchBackend() = default;
  // The context the search runs in: its settings, think state, flags and observer.
  virtual SearchContext& context() = 0;
  // Rule and hash set-up, once before the first depth.
  virtual void prepare() = 0;
  virtual int32_t evaluate(Colour side) = 0;
  // Clears the per-depth move-ordering tables of the searchers taking part.
  virtual void startDepth() = 0;
  // Searches the root to `depth`: writes bestMove, singleReply and the drop
  // flags of the think state, counts nodes, may set the abort flag.
  virtual int32_t searchRoot(int depth, Colour side) = 0;
  virtual const Line& principalVariation() = 0;
  // Adds the other searchers' statistics into the think state.
  virtual void mergeStatistics() = 0;
  // A move that completes or forces the win for `side`.
  virtual Move quickWinMove(Colour side) = 0;
};

int64_t nowMs();

// The kinds of think, by what they take of the clock.
enum class Budget {
  kTurn,       // a 24th of the time left plus half the increment
  kPonder,     // a 16th
  kCheckmate,  // a 16th: a solver may look longer than a turn, with no increment term
  kDecision,   // an 8th plus half the increment: whether to swap colours, once a game
  kSwapPair,   // a quarter: the stones offered instead of a swap
  kBalance,    // a 16th
};

// What a think of `kind` takes, `shares` times over (a turn's deepening
// takes more while its value is unstable or dropping), capped by the turn
// limit.
int32_t thinkBudget(const Settings& s, Budget kind, int shares = 1);

// The stop rules tested before each depth: out of time (unless the time is
// plentiful) or the board too full for `extraStones` more stones and the
// depth's plies, or a stop request, then the node limit and max_depth.
bool stopBeforeDepth(const SearchContext& ctx, const Board& board, int depth, bool plentiful, int extraStones = 0);

// Runs a turn on `board` for the side to move and returns the move chosen
// (kNoMove when no cell is usable); prints the report unless `quiet`.
Move runTurnDriver(SearchBackend& backend, const Board& board, bool quiet = false);

// Runs a checkmate think on `board` as a turn, deepening the backend's
// solver: its own budget, no stop on a stable move or a single reply, no
// draw judged (a draw offer is then refused); returns the move chosen.
Move runCheckmateDriver(SearchBackend& backend, const Board& board, bool quiet = false);

// Thinks on the opponent's time about the position on `board` (the
// opponent to move) until stopped or out of its budget, to fill the table;
// prints nothing and leaves the think state of the last turn as it was.
void runPonder(SearchBackend& backend, const Board& board);

// Deepens on `board` for the side to move with the decision budget until a
// value is proven or the budget runs out (an aborted depth's non-zero value
// counts); returns the final value, from the side to move's view.
int32_t runDecisionSearch(SearchBackend& backend, const Board& board);

// Sets drawAcceptable from the final value of a turn.
void updateDrawAcceptance(SearchContext& ctx, int32_t value, Colour side, bool singleReply, const Board& board);

}  // namespace zorva
