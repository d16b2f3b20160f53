#pragma once
// Line patterns: what a stone of one colour placed on an empty cell makes
// along one line, read from a table indexed by the eleven cells around it.
#include <cstdint>

#include "board/types.h"

namespace zorva {

// Pattern codes, one nibble per colour and direction. With X the stone that
// would be placed, x the colour's stones, # anything that stops the colour
// (the other colour, a wall, the edge), and "ways" the moves that would then
// make a three (7 or 8) through X:
//    0  nothing: no other stone shares a possible five with X, or no five fits
//    1  two without a way to a three              # x _ _ X _ _
//    2  two with one or two ways                  _ x _ _ X _ _
//    3  two with three ways                       _ _ x _ X _ _
//    4  two with four ways                        _ _ _ x X _ _ _
//    5  closed three: a move makes a four, none an open four   # x x X _ _
//    6  closed three with a move to a four of code 10           _ _ X _ x _ x
//    7  three with one move to an open four       _ x _ x X _
//    8  three with two such moves (open three)    _ _ x x X _ _
//    9  four whose line is dead once its completion point is taken   # x x x X _
//   10  four that survives the block: another move makes a four again
//       (x _ x x X _ _, the gap taken, still has x x X _ _), and for Renju
//       black the double four in one line (x _ x X x _ x)
//   11  open four: the opponent cannot stop the five; for Renju black only
//       the straight _ x x X x _ with both fives exact
//   12  five (five or more where the rule lets an overline win)
//   13  overline, black under Renju only; elsewhere it is a five (freestyle,
//       Renju white) or dead (standard)
// A four needs a five containing X, a three an open four containing X, so a
// stone far from X that already makes its own shape adds nothing to X.
enum PatternCode : uint8_t {
  kCodeNone = 0,
  kCodeClosedTwo = 1,
  kCodeClosedThree = 5,
  kCodeClosedThreeAlive = 6,
  kCodeThreeOne = 7,
  kCodeThreeTwo = 8,
  kCodeFourDead = 9,
  kCodeFourAlive = 10,
  kCodeOpenFour = 11,
  kCodeFive = 12,
  kCodeOverline = 13,
};

// Threat classes of the per-colour threat sets.
enum ThreatClass : int { kFiveClass = 0, kOpenFourClass = 1, kFourClass = 2, kThreeClass = 3, kThreatClasses = 4 };

// Class of each code, -1 for codes outside every class.
constexpr int8_t kClassOfCode[16] = {-1, -1, -1, -1, -1, -1, -1, kThreeClass, kThreeClass,
                                     kFourClass, kFourClass, kOpenFourClass, kFiveClass, -1, -1, -1};

// A span is 22 bits of a line word: cells p - 5 .. p + 5, two bits each,
// the nearest-to-start cell lowest, so the middle cell sits at bits 10-11.
constexpr int kSpanBits = 22;
constexpr uint32_t kSpanMask = (1u << kSpanBits) - 1;
constexpr int kSpanCells = 11;
constexpr int kSpanHalf = 5;

// Table entry: black's code in the low nibble, white's in the high nibble.
// Built for a rule on first request and read-only afterwards; safe to call
// from several threads.
const uint8_t* patternTable(int rule);

inline uint32_t spanAt(uint64_t lineWord, int pos) { return uint32_t(lineWord >> (2 * pos)) & kSpanMask; }

// The code of the middle cell of a span for one colour, by the table
// builder's own classifier (no table involved).
int classifySpan(int rule, Colour colour, uint32_t span);

}  // namespace zorva
