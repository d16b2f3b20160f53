#pragma once
// The cells a turn may answer with when the search gives none.
#include <cstdint>

#include "board/board.h"
#include "search/context.h"

namespace zorva {

// A free cell of the board that the side to move may choose: not blocked,
// not declared unusable for it, not leading into a blocked path.
bool mayChoose(const SearchContext& ctx, const Board& board, Move m);

// The centre when usable, else the usable empty cell nearest to it by
// Manhattan distance (the first in row-major order on a tie); kNoMove when
// no cell is usable.
Move emptyBoardMove(const SearchContext& ctx, const Board& board);

}  // namespace zorva
