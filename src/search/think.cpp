#include "search/think.h"

#include <cstdlib>

#include "search/movegen.h"

namespace zorva {

bool mayChoose(const SearchContext& ctx, const Board& board, Move m) {
  const Colour side = board.sideToMove();
  return m != kNoMove && board.inside(rowOf(m), colOf(m)) && board.at(m) == EMPTY && !blocked(ctx, m) &&
         !declaredUnusable(board, m, side) && !leadsIntoBlockPath(ctx, board, m, side);
}

Move emptyBoardMove(const SearchContext& ctx, const Board& board) {
  const int centreRow = board.height / 2, centreCol = board.width / 2;
  const Move centre = makeMove(centreRow, centreCol);
  if (board.height > 0 && mayChoose(ctx, board, centre)) return centre;
  Move best = kNoMove;
  int bestDistance = std::abs(centreRow + 1) + std::abs(centreCol + 1);
  for (int row = 0; row < board.height; ++row)
    for (int col = 0; col < board.width; ++col) {
      const Move m = makeMove(row, col);
      const int distance = std::abs(row - centreRow) + std::abs(col - centreCol);
      if (distance < bestDistance && mayChoose(ctx, board, m)) {
        best = m;
        bestDistance = distance;
      }
    }
  return best;
}

}  // namespace zorva
