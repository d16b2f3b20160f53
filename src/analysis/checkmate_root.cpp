// The root searches of checkmate mode: the turn root's move loop, REALTIME
// lines and best-move bookkeeping over a threat solver's root moves.
#include <algorithm>
#include <climits>

#include "analysis/checkmate.h"
#include "board/eval.h"
#include "search/driver.h"
#include "search/movegen.h"
#include "search/node.h"
#include "search/searcher.h"
#include "search/threat_solver.h"
#include "search/tt.h"
#include "search/vcf.h"

namespace zorva {

namespace {

constexpr int kRealtimeDepth = 8;
constexpr int64_t kNoNodeLimit = INT64_MAX / 4;  // the clock and the stop request bound a think
constexpr int32_t kHeuristicLimit = kProvenNode - 1;
constexpr int32_t kShownLimit = 10000;

// The move played while no win is proven: the search's first candidate.
Move fallbackMove(Searcher& s, Colour side) {
  ScoredMove moves[kMaxStones];
  const MoveRequest request{side, 0, nullptr, 0, nullptr, s.ctx->blockTable};
  const int count = generateMoves(s, request, moves);
  if (count == 0) return kNoMove;
  pickBest(moves, 0, count);
  return moves[0].move;
}

// The move chosen and the line that starts with it.
void playLine(Searcher& s, Move m) {
  s.ctx->think->bestMove = m;
  s.pv[0][0] = m;
  s.pvLength[0] = 1;
}

// Proves or refutes the root moves of `level` in turn, with `threats` that
// are not fours; the first win ends the search. Plies from the root to the
// five, or -1.
int proveRoot(Searcher& s, int level, int threats, Colour side, bool realtime) {
  Board& b = s.board;
  ThreatSolver run(s, level, {kNoNodeLimit, threats, kMaxStones});
  Move moves[kMaxStones];
  const int count = run.attackerMoves(side, moves);
  const bool forced = b.threat(side, kFiveClass).empty() && !b.threat(opponent(side), kFiveClass).empty();
  SearchObserver& observer = *s.ctx->observer;
  if (realtime) observer.rootPass();
  for (int i = 0; i < count; ++i) {
    const Move m = moves[i];
    if (!choosable(*s.ctx, b, m, side)) continue;
    if (realtime) observer.rootMoveStarted(m);
    int plies = 1;
    if (!b.threat(side, kFiveClass).contains(m)) {
      // A four, or the block of the opponent's four, costs no threat.
      const int left = run.isFour(side, m) || forced ? threats : threats - 1;
      b.placeStone<Update::Light>(m, side);
      const int rest = run.afterThreat(side, left);
      b.removeStone<Update::Light>(m);
      plies = rest < 0 ? -1 : rest + 1;
    }
    if (plies < 0 && s.ctx->aborted) return -1;
    if (realtime) observer.rootMoveDone(m, false);
    if (plies >= 0) {
      playLine(s, m);
      if (realtime) observer.rootBest(m, kShownLimit, s.pv[0], s.pvLength[0]);
      return plies;
    }
  }
  return -1;
}

}  // namespace

int checkmateLevel(int32_t setting) { return std::clamp(setting, 1, kSolverLevels); }

int32_t checkmateRoot(Searcher& s, int level, int depth, Colour side) {
  ThinkState& t = *s.ctx->think;
  s.pvLength[0] = 0;
  if (t.bestMove == kNoMove) t.bestMove = fallbackMove(s, side);
  const bool realtime = depth >= kRealtimeDepth && s.ctx->settings.realtime;
  // Fours first, by the family's fours solver: they cost no threat at all.
  Move four = kNoMove;
  int plies = s.board.threat(opponent(side), kFiveClass).empty() ? vcfPlies(s, side, &four) : -1;
  if (plies >= 0 && choosable(*s.ctx, s.board, four, side)) {
    playLine(s, four);
    return kWin + depth - plies;
  }
  // Levels 2 and 4 first ask the faster level below them, whose wins they
  // would find more slowly; level 4's quiet moves, the costliest threats,
  // lag a depth behind so that level 3's deeper wins come no later.
  plies = level == 2 || level == 4 ? proveRoot(s, level - 1, depth, side, false) : -1;
  if (plies < 0 && !s.ctx->aborted) plies = proveRoot(s, level, level == 4 ? depth - 1 : depth, side, realtime);
  if (plies >= 0) return kWin + depth - plies;
  if (s.ctx->aborted) return 0;
  if (t.bestMove != kNoMove) playLine(s, t.bestMove);
  // No win within this depth's threats: a value below the win band.
  return std::clamp(evaluate(s.board, side, s.scratch[0]), -kHeuristicLimit, kHeuristicLimit);
}

}  // namespace zorva
