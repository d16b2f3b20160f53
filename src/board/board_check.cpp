#include "board/board_check.h"

#include <cstdio>

#include "board/zobrist.h"

namespace zorva {

namespace {

std::string fault(const char* what, int a, int b) {
  char text[96];
  std::snprintf(text, sizeof text, "%s (%d, %d)", what, a, b);
  return text;
}

// The line word of direction d and index i as the cells say it must be.
uint64_t expectedLine(const Board& b, int d, int index) {
  const int length = b.lineLength(d, index);
  uint64_t word = (kWallBits << (kLineMargin - 2)) | (kWallBits << (2 * length + kLineMargin));
  for (int row = 0; row < b.size; ++row)
    for (int col = 0; col < b.size; ++col) {
      const Move m = makeMove(row, col);
      if (b.lineIndex(d, m) == index) word |= uint64_t(b.cells[m]) << b.lineShift(d, m);
    }
  return word;
}

std::string checkLines(const Board& b) {
  for (int d = 0; d < kDirections; ++d) {
    const int lines = d < 2 ? b.size : 2 * b.size - 1;
    const int first = d == 3 ? 1 : 0;
    for (int i = first; i < first + lines; ++i)
      if (b.line[d][i] != expectedLine(b, d, i)) return fault("line word differs: direction, index", d, i);
  }
  return {};
}

std::string checkCells(const Board& b) {
  uint64_t hash = 0;
  int stones = 0, marked = 0;
  for (int row = 0; row < b.size; ++row)
    for (int col = 0; col < b.size; ++col) {
      const Move m = makeMove(row, col);
      const Colour c = b.cells[m];
      if (!b.inside(row, col) && c != WALL) return fault("cell outside the rectangle is not a wall", row, col);
      if (c != EMPTY) hash ^= zobristKeys[m][c];
      if (c == BLACK || c == WHITE) ++stones;
      for (int colour = BLACK; colour <= WHITE; ++colour) {
        const bool isMarked = b.isMarked(m, Colour(colour));
        marked += isMarked;
        for (int d = 1; d < kDirections; ++d)
          if (bool(b.wallMask[colour - 1][d][b.lineIndex(d, m)] >> b.lineShift(d, m) & kWallBits) != isMarked)
            return fault("wall mask words disagree at", row, col);
      }
      if (!b.inside(row, col)) continue;
      for (int ci = 0; ci < 2; ++ci) {
        int sum = 0;
        for (int d = 0; d < kDirections; ++d) {
          const int room = b.countRoom(m, d, ci);
          sum += room;
          if (int(b.info[m].room[ci] >> (4 * d) & 15) != room) return fault("room count differs at", row, col);
        }
        if (b.info[m].roomSum[ci] != sum) return fault("room sum differs at", row, col);
      }
    }
  if (hash != b.hash) return "hash differs from the stones";
  if (stones != b.moveCount) return fault("stones on the board, moves listed", stones, b.moveCount);
  if (marked != b.markedCount) return fault("marked cells, marked count", marked, b.markedCount);
  for (int i = 0; i < b.moveCount; ++i) {
    const Colour c = b.cells[b.moves[i]];
    if (c != BLACK && c != WHITE) return fault("listed move is not a stone: index, cell", i, b.moves[i]);
  }
  return {};
}

}  // namespace

std::string checkBoard(const Board& board) {
  std::string problem = checkLines(board);
  return problem.empty() ? checkCells(board) : problem;
}

}  // namespace zorva
