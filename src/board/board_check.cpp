#include "board/board_check.h"

#include <cstdio>
#include <cstring>

#include "board/values.h"
#include "board/zobrist.h"

namespace zorva {

namespace {

std::string fault(const char* what, int a, int b) {
  char text[96];
  std::snprintf(text, sizeof text, "%s (%d, %d)", what, a, b);
  return text;
}

// Every line word as the cells say it must be: end walls and the colours.
std::string checkLines(const Board& b) {
  uint64_t expected[kDirections][kLineWords] = {};
  for (int d = 0; d < kDirections; ++d) {
    const int lines = d < 2 ? b.size : 2 * b.size - 1;
    const int first = d == 3 ? 1 : 0;
    for (int i = first; i < first + lines; ++i)
      expected[d][i] = (kWallBits << (kLineMargin - 2)) | (kWallBits << (2 * b.lineLength(d, i) + kLineMargin));
  }
  for (int row = 0; row < b.size; ++row)
    for (int col = 0; col < b.size; ++col) {
      const Move m = makeMove(row, col);
      for (int d = 0; d < kDirections; ++d) expected[d][b.lineIndex(d, m)] |= uint64_t(b.cells[m]) << b.lineShift(d, m);
    }
  for (int d = 0; d < kDirections; ++d)
    for (int i = 0; i < kLineWords; ++i)
      if (b.line[d][i] != expected[d][i]) return fault("line word differs: direction, index", d, i);
  return {};
}

std::string checkCells(const Board& b) {
  uint64_t hash = 0;
  int stones = 0, marked = 0;
  for (int row = 0; row < kMaxSide; ++row)
    for (int col = 0; col < kMaxSide; ++col) {
      const Move m = makeMove(row, col);
      if (row >= b.size || col >= b.size) {
        hash ^= zobristKeys[m][WALL];  // beyond the storage square: keys the board's size
        continue;
      }
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

// The cells as one colour sees them: its own marks count as wall.
struct ColourView {
  uint8_t cell[kCellSlots];
};

void makeView(const Board& b, Colour colour, ColourView& view) {
  for (Move m = 0; m < kCellSlots; ++m)
    view.cell[m] = uint8_t(b.inside(rowOf(m), colOf(m)) && b.isMarked(m, colour) ? WALL : b.cells[m]);
}

// The span of a cell read from the cells; everything off the rectangle is wall.
uint32_t spanFromCells(const Board& b, const ColourView& view, Move m, int d) {
  uint32_t span = 0;
  for (int k = -kSpanHalf; k <= kSpanHalf; ++k) {
    const int row = rowOf(m) + k * kDirRowStep[d], col = colOf(m) + k * kDirColStep[d];
    const uint32_t v = b.inside(row, col) ? view.cell[makeMove(row, col)] : uint32_t(WALL);
    span |= v << (2 * (k + kSpanHalf));
  }
  return span;
}

std::string checkPatterns(const Board& b) {
  ColourView views[2];
  makeView(b, BLACK, views[0]);
  makeView(b, WHITE, views[1]);
  ThreatSet expected[2][kThreatClasses];
  std::memset(expected, 0, sizeof expected);
  int32_t totals[2] = {0, 0};
  for (Move m = 0; m < kCellSlots; ++m) {
    const int row = rowOf(m), col = colOf(m);
    const bool inSquare = row < b.size && col < b.size;
    for (int ci = 0; ci < 2; ++ci) {
      uint32_t word = 0;
      for (int d = 0; inSquare && d < kDirections; ++d) {
        const uint32_t entry = b.patterns[spanFromCells(b, views[ci], m, d)];
        const uint32_t code = ci == 0 ? entry & 15 : entry >> 4;
        word |= code << (4 * d);
        if ((b.lineCodes[m][d] >> (4 * ci) & 15u) != code) return fault("line code differs at", row, col);
        if (const int c = kClassOfCode[code]; c >= 0) expected[ci][c].add(m, d);
      }
      const CellInfo& cell = b.info[m];
      if (cell.patternWord[ci] != word) return fault("pattern word differs at", row, col);
      const int value = b.inside(row, col) ? scaledCellValue(word, cell.roomSum[ci]) : 0;
      if (cell.cellValue[ci] != value) return fault("cell value differs at", row, col);
      totals[ci] += value;
    }
  }
  for (int ci = 0; ci < 2; ++ci) {
    for (int c = 0; c < kThreatClasses; ++c)
      if (!(b.threats[ci][c] == expected[ci][c])) return fault("threat set differs: colour index, class", ci, c);
    if (b.totalValue[ci] != totals[ci]) return fault("running total differs: colour index, total", ci, totals[ci]);
  }
  return {};
}

}  // namespace

std::string checkBoard(const Board& board) {
  std::string problem = checkLines(board);
  if (problem.empty()) problem = checkCells(board);
  return problem.empty() ? checkPatterns(board) : problem;
}

}  // namespace zorva
