#pragma once
// Renju forbidden points: black may not make an overline, two fours or two
// open threes with one stone, unless the same stone makes a five.
#include "board/board.h"

namespace zorva {

// True when black may not play the empty on-board cell `m`. Decided from
// black's pattern codes; doubles are confirmed by placing the stone with the
// light update and testing the cells that would complete its threes and
// fours, recursively. The board is left exactly as found.
bool isForbidden(Board& board, Move m);

}  // namespace zorva
