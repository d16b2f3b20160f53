#pragma once
// Candidate moves of a node, scored for ordering.
#include "board/board.h"
#include "search/searcher.h"

namespace zorva {

// Move ordering bonuses: moves from the table first, then killers, then the
// rest by the value of the cell to both sides.
constexpr int32_t kTableMoveScore = 1 << 29;
constexpr int32_t kKillerScore = 1 << 26;

struct MoveRequest {
  Colour side;
  const Move* tableMoves;
  int tableCount;
  const Move* killers;  // two, kNoMove for none
  const int32_t* blockTable;  // cells the engine may not choose, or null
};

// Fills `out` with the moves worth searching, best first; returns how many.
// Against an open three only the defences and our own fours are generated;
// Renju black never gets a forbidden cell.
int generateMoves(Searcher& s, const MoveRequest& request, ScoredMove* out);

// True when `side` has an open-four point it may play (under Renju black
// may not play a forbidden one).
bool hasPlayableOpenFour(Board& b, Colour side);

// True when a stone of `side` on `m` makes at least a three or blocks a four.
bool isTacticalMove(const Board& b, Move m, Colour side);

}  // namespace zorva
