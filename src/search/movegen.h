#pragma once
// Candidate moves of a node, scored for ordering.
#include "board/board.h"
#include "search/searcher.h"

namespace zorva {

// Stage bonuses: the threat-driven stages come first, in this order, and
// each stage is ordered within by the value of the cell.
constexpr int32_t kFourStageScore = 1 << 28;    // our four-making points
constexpr int32_t kThreeStageScore = 1 << 27;   // three points of either side, our double closed threes
constexpr int32_t kKillerScore = 1 << 26;
constexpr int32_t kTableMoveScore = 1 << 29;    // root only: the table's moves lead

struct MoveRequest {
  Colour side;
  int ply;
  const Move* skip;  // moves already searched at this node
  int skipCount;
  const Killer* killers;      // two, or null
  const int32_t* blockTable;  // cells the engine may not choose, or null
};

// Fills `out` with the moves worth searching, in board order with their
// ordering scores; returns how many. Most nodes cut off after a move or two,
// so the caller picks the best one at a time rather than sorting them all.
// Against an open three only the defences and our own fours are generated;
// Renju black never gets a forbidden cell, no side a cell declared unusable
// for it, and no move leads into a blocked path.
int generateMoves(Searcher& s, const MoveRequest& request, ScoredMove* out);

// Brings the best of moves[from, count) to `from`: the first of equal scores.
void pickBest(ScoredMove* moves, int from, int count);
// Orders moves best first; equal scores keep their order.
void sortMoves(ScoredMove* moves, int count);

// When the opponent, were it to move, wins by continuous threats within the
// budget, only a move on the cells of that win, or a four or three of ours
// that takes the tempo, can stop it: the other moves are dropped, and so
// are the cells and threes after which the opponent wins by fours, unless
// none would be left. Returns the new count; the order is kept.
int keepThreatDefences(Searcher& s, Colour side, ScoredMove* moves, int count, int nodeBudget, int maxThrees);

// True when `side` may play `m`: a free cell of the board, not declared
// unusable for the side, not forbidden for Renju black, not leading into a
// blocked path.
bool playable(const SearchContext& ctx, Board& b, Move m, Colour side);
// Playable, and not a cell the user blocked: a move the engine may choose.
bool choosable(const SearchContext& ctx, Board& b, Move m, Colour side);

// True when the user declared `m` a cell `side` may not use (zvforbid for black).
bool declaredUnusable(const Board& b, Move m, Colour side);

// True when `side` has an open-four point it may play (under Renju black
// may not play a forbidden one).
bool hasPlayableOpenFour(Board& b, Colour side);

// True when `side` playing `m` reaches a position the front end blocked.
bool leadsIntoBlockPath(const SearchContext& ctx, const Board& b, Move m, Colour side);

}  // namespace zorva
