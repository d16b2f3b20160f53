#pragma once
// The rotations and reflections of the board that map a position onto
// another: the eight of a square, the four of a rectangle.
#include "board/board.h"

namespace zorva {

// Writes to `out` the cells other than `m` where a stone of `colour` gives a
// position that is a symmetric image of the one a stone on `m` gives (walls
// counted); returns how many, at most seven.
int symmetricImages(const Board& b, Move m, Colour colour, Move* out);

}  // namespace zorva
