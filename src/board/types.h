#pragma once
// Shared board vocabulary: cells, colours, directions and board limits.
#include <cstdint>

namespace zorva {

// A cell as (row << 5) | col; the protocol's first coordinate is the row.
using Move = int32_t;

constexpr int kMaxSide = 22;
constexpr int kRowSlots = 32;                        // columns 22..31 of a row never hold a cell
constexpr int kCellSlots = kMaxSide * kRowSlots;     // 704
constexpr int kMaxStones = kMaxSide * kMaxSide;      // 484
constexpr Move kNoMove = -1;

enum Colour : int32_t { EMPTY = 0, BLACK = 1, WHITE = 2, WALL = 3 };

constexpr Colour opponent(Colour c) { return Colour(c ^ 3); }
// Index of a stone colour in the per-colour arrays: black 0, white 1.
constexpr int colourIndex(Colour c) { return c - 1; }

// Rule codes as the settings store them.
constexpr int kFreestyle = 0;  // five or more wins
constexpr int kStandard = 1;   // exactly five wins, for both sides
constexpr int kRenju = 2;      // exactly five for black, who may not make doubles or overlines
constexpr int kRuleCount = 3;

// Line directions, always in this order: horizontal, vertical, anti-diagonal
// (row + 1, column - 1) and diagonal (row + 1, column + 1).
constexpr int kDirections = 4;
constexpr int kDirStep[kDirections] = {1, 32, 31, 33};
constexpr int kDirRowStep[kDirections] = {0, 1, 1, 1};
constexpr int kDirColStep[kDirections] = {1, 0, -1, 1};

constexpr Move makeMove(int row, int col) { return (row << 5) | col; }
constexpr int rowOf(Move m) { return m >> 5; }
constexpr int colOf(Move m) { return m & 31; }

}  // namespace zorva
