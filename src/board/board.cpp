#include "board/board.h"

#include <algorithm>
#include <cstring>

#include "board/zobrist.h"

namespace zorva {

namespace {
constexpr int kRoomReach = 4;  // a five through a cell spans at most four cells on each side

int diagonalLength(int size, int offsetFromMain) { return size - (offsetFromMain < 0 ? -offsetFromMain : offsetFromMain); }
}  // namespace

int Board::lineIndex(int d, Move m) const {
  const int row = rowOf(m), col = colOf(m);
  switch (d) {
    case 0: return row;
    case 1: return col;
    case 2: return row + col;
    default: return size + row - col;
  }
}

int Board::linePos(int d, Move m) const {
  const int row = rowOf(m), col = colOf(m);
  switch (d) {
    case 0: return col;
    case 1: return row;
    case 2: return std::min(row, size - 1 - col);
    default: return std::min(row, col);
  }
}

int Board::lineLength(int d, int index) const {
  switch (d) {
    case 0:
    case 1: return size;
    case 2: return index < size ? index + 1 : 2 * size - 1 - index;
    default: return diagonalLength(size, index - size);
  }
}

void Board::setLineBits(Move m, uint64_t value) {
  for (int d = 0; d < kDirections; ++d) line[d][lineIndex(d, m)] |= value << lineShift(d, m);
}

void Board::clearLineBits(Move m) {
  for (int d = 0; d < kDirections; ++d) line[d][lineIndex(d, m)] &= ~(kWallBits << lineShift(d, m));
}

void Board::reset(int newWidth, int newHeight, int newRule) {
  const bool valid = newWidth >= 1 && newWidth <= kMaxSide && newHeight >= 1 && newHeight <= kMaxSide;
  width = valid ? newWidth : 0;
  height = valid ? newHeight : 0;
  size = std::max(width, height);
  rule = newRule;
  std::memset(cells, 0, sizeof cells);
  std::memset(info, 0, sizeof info);
  std::memset(totalValue, 0, sizeof totalValue);
  std::memset(line, 0, sizeof line);
  std::memset(wallMask, 0, sizeof wallMask);
  markedCount = 0;
  hash = 0;
  std::memset(moves, 0, sizeof moves);
  moveCount = 0;

  // End walls of every line of the square.
  for (int d = 0; d < kDirections; ++d) {
    const int lines = d < 2 ? size : 2 * size - 1;
    const int first = d == 3 ? 1 : 0;
    for (int i = first; i < first + lines; ++i) {
      const int length = lineLength(d, i);
      line[d][i] = (kWallBits << (kLineMargin - 2)) | (kWallBits << (2 * length + kLineMargin));
    }
  }
  // The square outside the rectangle is wall: it closes lines like the edge
  // and keys the hash, so rectangles of different shapes never share entries.
  for (int row = 0; row < size; ++row)
    for (int col = 0; col < size; ++col)
      if (!inside(row, col)) {
        const Move m = makeMove(row, col);
        cells[m] = WALL;
        setLineBits(m, WALL);
        hash ^= zobristKeys[m][WALL];
      }
  resetRooms();
}

int Board::countRoom(Move m, int d, int colourIndex) const {
  int room = 0;
  for (int sign = -1; sign <= 1; sign += 2) {
    int row = rowOf(m), col = colOf(m);
    for (int step = 0; step < kRoomReach; ++step) {
      row += sign * kDirRowStep[d];
      col += sign * kDirColStep[d];
      if (!inside(row, col)) break;
      const Move n = makeMove(row, col);
      if (cells[n] == WALL || isMarked(n, Colour(colourIndex + 1))) break;
      ++room;
    }
  }
  return room;
}

void Board::refreshRoom(Move m) {
  CellInfo& ci = info[m];
  for (int c = 0; c < 2; ++c) {
    uint32_t room = 0;
    int sum = 0;
    for (int d = 0; d < kDirections; ++d) {
      const int r = countRoom(m, d, c);
      room |= uint32_t(r) << (4 * d);
      sum += r;
    }
    ci.room[c] = room;
    ci.roomSum[c] = uint16_t(sum);
  }
}

void Board::resetRooms() {
  for (int row = 0; row < height; ++row)
    for (int col = 0; col < width; ++col) refreshRoom(makeMove(row, col));
}

// A wall or a mark changes the room of the cells within reach on its lines.
void Board::refreshRoomsAround(Move m) {
  refreshRoom(m);
  for (int d = 0; d < kDirections; ++d)
    for (int sign = -1; sign <= 1; sign += 2) {
      int row = rowOf(m), col = colOf(m);
      for (int step = 0; step < kRoomReach; ++step) {
        row += sign * kDirRowStep[d];
        col += sign * kDirColStep[d];
        if (!inside(row, col)) break;
        refreshRoom(makeMove(row, col));
      }
    }
}

void Board::placeStone(Move m, Colour colour) {
  cells[m] = colour;
  setLineBits(m, colour);
  hash ^= zobristKeys[m][colour];
  if (colour == WALL)
    refreshRoomsAround(m);
  else
    moves[moveCount++] = m;
}

void Board::removeStone(Move m) {
  const Colour colour = cells[m];
  cells[m] = EMPTY;
  clearLineBits(m);
  hash ^= zobristKeys[m][colour];
  if (colour == WALL)
    refreshRoomsAround(m);
  else
    moves[--moveCount] = 0;
}

bool Board::isMarked(Move m, Colour colour) const {
  const int d = 0;
  return (wallMask[colour - 1][d][lineIndex(d, m)] >> lineShift(d, m) & kWallBits) != 0;
}

void Board::markCell(Move m, Colour colour) {
  if (isMarked(m, colour)) return;
  for (int d = 0; d < kDirections; ++d) wallMask[colour - 1][d][lineIndex(d, m)] |= kWallBits << lineShift(d, m);
  ++markedCount;
  refreshRoomsAround(m);
}

void Board::unmarkCell(Move m, Colour colour) {
  if (!isMarked(m, colour)) return;
  for (int d = 0; d < kDirections; ++d) wallMask[colour - 1][d][lineIndex(d, m)] &= ~(kWallBits << lineShift(d, m));
  --markedCount;
  refreshRoomsAround(m);
}

// Sets the position up again from its parts: walls first, then the marks,
// then the stones in the order they were played.
void Board::replay(Move skip) {
  Move blocks[kMaxStones], marks[2][kMaxStones], played[kMaxStones];
  Colour playedColour[kMaxStones];
  int blockCount = 0, markCount[2] = {0, 0}, playedCount = 0;
  for (int row = 0; row < height; ++row)
    for (int col = 0; col < width; ++col) {
      const Move m = makeMove(row, col);
      if (cells[m] == WALL && m != skip) blocks[blockCount++] = m;
      for (int c = 0; c < 2; ++c)
        if (isMarked(m, Colour(c + 1))) marks[c][markCount[c]++] = m;
    }
  for (int i = 0; i < moveCount; ++i)
    if (moves[i] != skip) {
      playedColour[playedCount] = cells[moves[i]];
      played[playedCount++] = moves[i];
    }

  reset(width, height, rule);
  for (int i = 0; i < blockCount; ++i) placeStone(blocks[i], WALL);
  for (int c = 0; c < 2; ++c)
    for (int i = 0; i < markCount[c]; ++i) markCell(marks[c][i], Colour(c + 1));
  for (int i = 0; i < playedCount; ++i) placeStone(played[i], playedColour[i]);
}

void Board::rebuild() { replay(kNoMove); }

TakeBackResult Board::takeBack(int row, int col) {
  if (!inside(row, col) || cells[makeMove(row, col)] == EMPTY) return TakeBackResult::BadCell;
  const Move m = makeMove(row, col);
  if (cells[m] == WALL) return TakeBackResult::NotAStone;
  if (m == lastMove())
    removeStone(m);
  else
    replay(m);
  return TakeBackResult::Done;
}

void copyBoard(const Board& from, Board& to) {
  if (from.hash != 0 && from.hash == to.hash && from.width == to.width && from.height == to.height &&
      from.rule == to.rule)
    return;
  to = from;
}

}  // namespace zorva
