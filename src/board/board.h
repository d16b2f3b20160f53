#pragma once
// The position every search works on: stones, line bitboards, per-cell
// records, the incremental hash and the move list. Fixed-size storage only,
// so a board can be copied with one assignment and nothing is allocated.
#include <cstdint>

#include "board/patterns.h"
#include "board/threats.h"
#include "board/types.h"
#include "board/zobrist.h"

namespace zorva {

constexpr int kLineWords = 2 * kMaxSide;  // enough for the 2 * size - 1 diagonals
constexpr int kLineMargin = 10;           // bits below position 0: five virtual cells
constexpr uint64_t kWallBits = 3;

// Per-cell record. Per colour (index 0 black, 1 white): four 4-bit room counts
// and pattern codes, direction d in bits 4d..4d+3.
struct CellInfo {
  uint16_t roomSum[2];      // sum of the four room nibbles, 0..32
  int16_t cellValue[2];     // static value of the cell for that colour; learned values may be negative
  uint32_t patternWord[2];  // what a stone of that colour here makes, per direction
  uint32_t room[2];         // usable cells within four steps, both sides together, per direction

  bool operator==(const CellInfo&) const = default;
};
static_assert(sizeof(CellInfo) == 24);

enum class TakeBackResult { Done = 0, NotAStone = 1, BadCell = 2 };

// Depth of the pattern update. Light changes codes and threat sets only, for
// stones taken back before anything is evaluated (forbidden-point tests,
// threat searches); Full also keeps the cell values and running totals.
enum class Update { Light, Full };

// Where a cell lies on its line in each direction, and the positions of that
// line whose spans contain it (pos - 5 .. pos + 5 clipped to the line).
struct LineSpan {
  uint8_t index, pos, first, last;
};
// Shared read-only geometry of one board size.
struct LineGeometry {
  LineSpan span[kCellSlots][kDirections];
  Move start[kDirections][kLineWords];  // the cell at position 0 of each line
};
const LineGeometry& lineGeometry(int size);

struct Board {
  // `size` is the storage square in use; the playable rectangle is width x
  // height inside it. Cells of the square outside the rectangle are walls.
  int size = 0;
  int width = 0;
  int height = 0;
  int rule = 0;

  Colour cells[kCellSlots];
  CellInfo info[kCellSlots];
  // The same codes per direction, both colours in one byte (black low
  // nibble), so the pattern update reads a cell's old codes with one load.
  uint8_t lineCodes[kCellSlots][kDirections];
  int32_t totalValue[2];

  // Two bits per cell, position p at bits 2p + 10; walls close both ends.
  // line[d][i]: rows by row, columns by column, anti-diagonals by row + col,
  // diagonals by size + row - col.
  uint64_t line[kDirections][kLineWords];
  // Per colour (0 black, 1 white): cells that colour may not use carry 3.
  uint64_t wallMask[2][kDirections][kLineWords];
  int markedCount;

  // Per colour (0 black, 1 white) and ThreatClass.
  ThreatSet threats[2][kThreatClasses];

  // Makes the three test of isForbidden pass over open-four points that are
  // also black five points; off unless the engine turns it on.
  bool threeTestSkipsFivePoints = false;

  const uint8_t* patterns;  // the pattern table of `rule`
  const LineGeometry* geometry;  // of `size`

  uint64_t hash;
  Move moves[kMaxStones];
  int moveCount;

  // Empties the board and sizes it; a side outside 1..kMaxSide makes a board
  // with no cells.
  void reset(int newWidth, int newHeight, int newRule);

  // Callers pass only empty cells inside the rectangle to placeStone and only
  // occupied cells, last placed first, to removeStone. Walls (blocked cells)
  // always refresh the values of the cells whose room they change.
  template <Update U = Update::Full>
  void placeStone(Move m, Colour colour);
  // The hash the board will have once `colour` is placed on the empty `m`.
  uint64_t hashAfter(Move m, Colour colour) const { return hash ^ zobristKeys[m][colour]; }
  template <Update U = Update::Full>
  void removeStone(Move m);

  void markCell(Move m, Colour colour);
  void unmarkCell(Move m, Colour colour);
  bool isMarked(Move m, Colour colour) const;

  // Removes the stone at (row, col): the last one directly, any other by
  // replaying the position without it.
  TakeBackResult takeBack(int row, int col);
  // Rebuilds every derived field from the cells, the marks and the move list,
  // keeping the order of the moves.
  void rebuild();
  // Switches the pattern table to `newRule` and rebuilds the codes, threat
  // sets and values of the position; nothing happens when the rule is the same.
  void setRule(int newRule);

  bool inside(int row, int col) const { return row >= 0 && row < height && col >= 0 && col < width; }
  Colour at(Move m) const { return cells[m]; }
  uint32_t code(Move m, Colour colour, int d) const { return info[m].patternWord[colourIndex(colour)] >> (4 * d) & 15; }
  const ThreatSet& threat(Colour colour, ThreatClass c) const { return threats[colourIndex(colour)][c]; }
  int total(Colour colour) const { return totalValue[colourIndex(colour)]; }

  Colour sideToMove() const { return (moveCount & 1) ? WHITE : BLACK; }
  int stoneCount() const { return moveCount; }
  Move lastMove() const { return moveCount > 0 ? moves[moveCount - 1] : kNoMove; }

  int lineIndex(int d, Move m) const;
  int linePos(int d, Move m) const;
  int lineLength(int d, int index) const;
  int lineShift(int d, Move m) const { return 2 * linePos(d, m) + kLineMargin; }
  // The cell's two-bit slot in a line word.
  Colour lineCell(int d, Move m) const { return Colour((line[d][lineIndex(d, m)] >> lineShift(d, m)) & kWallBits); }

  // Cells within four steps along d, both sides, until the edge, a wall
  // or a cell marked for that colour.
  int countRoom(Move m, int d, int colourIndex) const;

  bool operator==(const Board&) const = default;

 private:
  template <bool Walled, Update U>
  void changeCell(Move m, uint64_t value);
  template <int D, bool Walled, Update U>
  void updateLine(Move m);
  template <Update U>
  void setCode(Move m, int colourIndex, int d, uint32_t newCode);
  void refreshValue(Move m);
  void refreshLinesAround(Move m);
  void setLineBits(Move m, uint64_t value);
  void resetRooms();
  void refreshRoomsAround(Move m);
  void refreshRoom(Move m);
  void replay(Move skip);
};

// Makes `to` a copy of `from`; boards with the same non-zero hash, geometry
// and rule are taken to hold the same position and are left alone.
void copyBoard(const Board& from, Board& to);

}  // namespace zorva
