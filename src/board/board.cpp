#include "board/board.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include "board/values.h"
#include "board/zobrist.h"

namespace zorva {

namespace {
constexpr int kRoomReach = 4;  // a five through a cell spans at most four cells on each side

int diagonalLength(int size, int offsetFromMain) { return size - (offsetFromMain < 0 ? -offsetFromMain : offsetFromMain); }

LineGeometry geometries[kMaxSide + 1];
std::once_flag geometryBuilt[kMaxSide + 1];

void buildGeometry(int size, LineGeometry& g) {
  Board shape;  // only its geometry functions are used
  shape.size = size;
  for (int d = 0; d < kDirections; ++d)
    for (int i = 0; i < kLineWords; ++i) g.start[d][i] = kNoMove;
  for (int row = 0; row < size; ++row)
    for (int col = 0; col < size; ++col) {
      const Move m = makeMove(row, col);
      for (int d = 0; d < kDirections; ++d) {
        const int index = shape.lineIndex(d, m), pos = shape.linePos(d, m);
        const int length = shape.lineLength(d, index);
        g.span[m][d] = {uint8_t(index), uint8_t(pos), uint8_t(std::max(0, pos - kSpanHalf)),
                        uint8_t(std::min(length - 1, pos + kSpanHalf))};
        if (pos == 0) g.start[d][index] = m;
      }
    }
}
}  // namespace

const LineGeometry& lineGeometry(int size) {
  size = std::clamp(size, 0, kMaxSide);
  std::call_once(geometryBuilt[size], [size] { buildGeometry(size, geometries[size]); });
  return geometries[size];
}

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

void Board::reset(int newWidth, int newHeight, int newRule) {
  const bool valid = newWidth >= 1 && newWidth <= kMaxSide && newHeight >= 1 && newHeight <= kMaxSide;
  width = valid ? newWidth : 0;
  height = valid ? newHeight : 0;
  size = std::max(width, height);
  rule = newRule >= 0 && newRule < kRuleCount ? newRule : kFreestyle;
  patterns = patternTable(rule);
  geometry = &lineGeometry(size);
  initValueTables();
  std::memset(cells, 0, sizeof cells);
  std::memset(info, 0, sizeof info);
  std::memset(lineCodes, 0, sizeof lineCodes);
  std::memset(totalValue, 0, sizeof totalValue);
  std::memset(line, 0, sizeof line);
  std::memset(wallMask, 0, sizeof wallMask);
  markedCount = 0;
  std::memset(threats, 0, sizeof threats);
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
  // The square outside the rectangle is wall: it closes lines like the
  // edge. Every cell of the largest board outside the rectangle keys the
  // hash as a wall, so that positions on boards of different sizes or
  // shapes never share a table entry.
  for (int row = 0; row < kMaxSide; ++row)
    for (int col = 0; col < kMaxSide; ++col)
      if (!inside(row, col)) {
        const Move m = makeMove(row, col);
        hash ^= zobristKeys[m][WALL];
        if (row >= size || col >= size) continue;
        cells[m] = WALL;
        setLineBits(m, WALL);
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

void Board::refreshValue(Move m) {
  CellInfo& ci = info[m];
  for (int c = 0; c < 2; ++c) {
    const int value = scaledCellValue(ci.patternWord[c], ci.roomSum[c]);
    totalValue[c] += value - ci.cellValue[c];
    ci.cellValue[c] = int16_t(value);
  }
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
  refreshValue(m);
}

void Board::resetRooms() {
  for (int row = 0; row < height; ++row)
    for (int col = 0; col < width; ++col) refreshRoom(makeMove(row, col));
}

// A wall or a mark changes the room of the cells within reach on its lines,
// and with the room their values.
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

// Stores one nibble and moves the cell between threat sets; the full update
// also re-scales the cell's value and carries the difference into the total.
template <Update U>
inline void Board::setCode(Move m, int ci, int d, uint32_t newCode) {
  uint32_t& word = info[m].patternWord[ci];
  const uint32_t oldCode = word >> (4 * d) & 15;
  if (oldCode == newCode) return;
  word ^= (oldCode ^ newCode) << (4 * d);
  if (const int c = kClassOfCode[oldCode]; c >= 0) threats[ci][c].remove(m, d);
  if (const int c = kClassOfCode[newCode]; c >= 0) threats[ci][c].add(m, d);
  if constexpr (U == Update::Full) {
    CellInfo& cell = info[m];
    const int value = scaledCellValue(word, cell.roomSum[ci]);
    totalValue[ci] += value - cell.cellValue[ci];
    cell.cellValue[ci] = int16_t(value);
  }
}

// Re-reads the codes of every cell whose span holds the changed cell. The
// walled variant gives each colour the line as its own marks close it.
template <int D, bool Walled, Update U>
inline void Board::updateLine(Move m) {
  const LineSpan s = geometry->span[m][D];
  const uint64_t word = line[D][s.index];
  uint64_t blackWord = word, whiteWord = word;
  if constexpr (Walled) {
    blackWord |= wallMask[0][D][s.index];
    whiteWord |= wallMask[1][D][s.index];
  }
  const uint8_t* table = patterns;
  Move cell = geometry->start[D][s.index] + s.first * kDirStep[D];
  for (int q = s.first; q <= s.last; ++q, cell += kDirStep[D]) {
    uint8_t& old = lineCodes[cell][D];
    uint32_t codes;
    if constexpr (Walled)
      codes = (table[spanAt(blackWord, q)] & 15u) | (table[spanAt(whiteWord, q)] & 0xF0u);
    else
      codes = table[spanAt(word, q)];
    if (codes == old) continue;
    old = uint8_t(codes);
    setCode<U>(cell, 0, D, codes & 15);
    setCode<U>(cell, 1, D, codes >> 4);
  }
}

// Writes `value` (a colour, or 0 to clear) into the cell's slot of each line
// word, each followed at once by that line's update.
template <bool Walled, Update U>
void Board::changeCell(Move m, uint64_t value) {
  const LineSpan* s = geometry->span[m];
  auto write = [&](int d) {
    uint64_t& word = line[d][s[d].index];
    const int shift = 2 * s[d].pos + kLineMargin;
    word = (word & ~(kWallBits << shift)) | value << shift;
  };
  write(0);
  updateLine<0, Walled, U>(m);
  write(1);
  updateLine<1, Walled, U>(m);
  write(2);
  updateLine<2, Walled, U>(m);
  write(3);
  updateLine<3, Walled, U>(m);
}

template <Update U>
void Board::placeStone(Move m, Colour colour) {
  cells[m] = colour;
  if (markedCount)
    changeCell<true, U>(m, colour);
  else
    changeCell<false, U>(m, colour);
  hash = hashAfter(m, colour);
  if (colour == WALL)
    refreshRoomsAround(m);
  else
    moves[moveCount++] = m;
}

template <Update U>
void Board::removeStone(Move m) {
  const Colour colour = cells[m];
  cells[m] = EMPTY;
  if (markedCount)
    changeCell<true, U>(m, EMPTY);
  else
    changeCell<false, U>(m, EMPTY);
  hash ^= zobristKeys[m][colour];
  if (colour == WALL)
    refreshRoomsAround(m);
  else
    moves[--moveCount] = 0;
}

template void Board::placeStone<Update::Light>(Move, Colour);
template void Board::placeStone<Update::Full>(Move, Colour);
template void Board::removeStone<Update::Light>(Move);
template void Board::removeStone<Update::Full>(Move);

bool Board::isMarked(Move m, Colour colour) const {
  const int d = 0;
  return (wallMask[colour - 1][d][lineIndex(d, m)] >> lineShift(d, m) & kWallBits) != 0;
}

// A mark closes the lines through the cell for one colour: re-read the codes
// around it (the walled variant also serves when the last mark has gone,
// the masks then being empty), then the rooms and values.
void Board::refreshLinesAround(Move m) {
  const uint64_t unchanged = uint64_t(cells[m]);
  changeCell<true, Update::Full>(m, unchanged);
  refreshRoomsAround(m);
}

void Board::markCell(Move m, Colour colour) {
  if (isMarked(m, colour)) return;
  for (int d = 0; d < kDirections; ++d) wallMask[colour - 1][d][lineIndex(d, m)] |= kWallBits << lineShift(d, m);
  ++markedCount;
  refreshLinesAround(m);
}

void Board::unmarkCell(Move m, Colour colour) {
  if (!isMarked(m, colour)) return;
  for (int d = 0; d < kDirections; ++d) wallMask[colour - 1][d][lineIndex(d, m)] &= ~(kWallBits << lineShift(d, m));
  --markedCount;
  refreshLinesAround(m);
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

void Board::setRule(int newRule) {
  if (newRule == rule) return;
  rule = newRule;
  replay(kNoMove);
}

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

// Cells declared unusable leave the hash alone, so the marks are compared too.
void copyBoard(const Board& from, Board& to) {
  const bool sameMarks = (from.markedCount == 0 && to.markedCount == 0) ||
                         std::memcmp(from.wallMask, to.wallMask, sizeof from.wallMask) == 0;
  if (from.hash != 0 && from.hash == to.hash && from.width == to.width && from.height == to.height &&
      from.rule == to.rule && sameMarks)
    return;
  to = from;
}

}  // namespace zorva
