#pragma once
// The threat solvers, one family of proof searches: can the attacker, to
// move, win by a chain of threats, each of which the defender must answer?
// A four allows only its block; any other threat allows every answer that
// could matter, the defender's own fours included. The levels widen what
// counts as a threat and which answers are tried, from fast and narrow to
// slow and thorough:
//   1  fours and threes of the threat sets; a three must threaten an open
//      four, answered on the attacker's four points or by the defender's fours.
//   2  the same moves, but any of them is a threat when a pass would lose to
//      fours, answered anywhere near that win (anywhere at all under Renju).
//   3  any move making three stones in a five-cell window, as level 2.
//   4  level 3, plus quiet moves after which a pass would lose to threes and
//      fours (double threats), answered by every cell.
// Every win a solver reports is forced under the board's rule; a -1 proves
// nothing. Levels 2 to 4 keep what they decided in one table of the think
// thread: only it may run them.
#include <cstdint>

#include "board/types.h"

namespace zorva {

struct Searcher;

constexpr int kSolverLevels = 4;

struct SolverLimits {
  int64_t nodes;  // nodes of the run, its fours searches counted
  int threats;    // threat moves that are not fours the attacker may make
  int width;      // the attacker's best threats tried at a node, at most
};

// A run of one solver level on the searcher's board.
class ThreatSolver {
 public:
  // `zone`, when given (one flag per cell), gets the cells of a win marked:
  // every move of its proof, each answer it refuted and the final fives.
  ThreatSolver(Searcher& s, int level, const SolverLimits& limits, bool* zone = nullptr);

  // Plies until `attacker`, to move, makes five, or -1; `firstMove`, when
  // given, receives the move that starts the win.
  int attack(Colour attacker, Move* firstMove);
  // `attacker` has just moved and the defender is to move: plies until the
  // attacker's five against every answer, or -1; `threats` are left.
  int afterThreat(Colour attacker, int threats);
  // The moves an attacker's node tries: its five, the block of the
  // defender's, or its threats best first; returns how many.
  int attackerMoves(Colour attacker, Move* out);
  // A four of the attacker's costs no threat.
  bool isFour(Colour attacker, Move m) const;
  // The node budget ran out: a -1 of this run proves nothing at all.
  bool truncated() const { return truncated_; }


 private:
  template <Colour A, int L>
  friend struct SolverNodes;

  // Counts a node; true once the run is out of nodes or time.
  bool exhausted();
  int nodesLeft() const;

  Searcher& s_;
  int level_;
  int threats_;
  int width_;
  bool* zone_;
  int64_t lastNode_;
  bool truncated_ = false;
};

// Forgets what levels 2 to 4 decided; their results hold for one set of
// walls and rule.
void clearSolverMemo();

}  // namespace zorva
