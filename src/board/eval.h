#pragma once
// Static evaluation of a quiet position for one colour: the incrementally
// kept cell values, corrected by a few threat terms.
#include "board/board.h"

namespace zorva {

// Score for `colour` (BLACK or WHITE). `scratch` is the caller's list for
// this ply (room for kMaxStones cells); the threat cells walked are written
// there. Under Renju the forbidden-point test places and removes stones, so
// the board is changed in between and left exactly as found.
int evaluate(Board& board, Colour colour, Move* scratch);

}  // namespace zorva
