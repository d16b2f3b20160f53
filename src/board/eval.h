#pragma once
// Static evaluation of a quiet position for one colour: the incrementally
// kept cell values, corrected by a few threat terms.
#include "board/board.h"

namespace zorva {

// Added to every score: the side to move is a tempo ahead.
constexpr int kSideToMove = 32;

// Weights of the four and three points of the side to move, then of the
// opponent's, fitted to self-play results: the side to move makes its
// threats first, so its points count for more beyond the cell values.
constexpr int kThreatPointWeights[4] = {21, 21, -20, 3};
int threatPointScore(const Board& board, Colour colour);

// Score for `colour` (BLACK or WHITE). `scratch` is the caller's list for
// this ply (room for kMaxStones cells); the threat cells walked are written
// there. Under Renju the forbidden-point test places and removes stones, so
// the board is changed in between and left exactly as found.
int evaluate(Board& board, Colour colour, Move* scratch);

}  // namespace zorva
