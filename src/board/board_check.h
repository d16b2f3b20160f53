#pragma once
// Debug checker: recomputes a board's derived fields (line words, rooms,
// codes, threat sets, cell values, totals, hash) from its stones and
// reports the first field that disagrees with the incrementally kept one.
#include <string>

#include "board/board.h"

namespace zorva {

// Empty when the board is consistent, otherwise a description of the fault.
std::string checkBoard(const Board& board);

}  // namespace zorva
