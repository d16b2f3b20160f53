#include "board/forbid.h"

namespace zorva {

namespace {

int blackCode(const Board& b, Move m, int d) { return int(b.code(m, BLACK, d)); }

bool inRange(Move m) { return m >= 0 && m < kCellSlots; }

// First cell past the black stones next to `m` in one direction. Stops at
// the first cell of the array that is not black; the unused slots past the
// last column are empty, so a row's end stops the walk too.
Move pastBlack(const Board& b, Move m, int step) {
  Move n = m + step;
  while (inRange(n) && b.at(n) == BLACK) n += step;
  return n;
}

// The same walk by coordinates, for the four tests: kNoMove when it leaves
// the board.
Move pastBlackOnBoard(const Board& b, Move m, int d, int sign) {
  int row = rowOf(m), col = colOf(m);
  for (;;) {
    row += sign * kDirRowStep[d];
    col += sign * kDirColStep[d];
    if (!b.inside(row, col)) return kNoMove;
    const Move n = makeMove(row, col);
    if (b.at(n) != BLACK) return n;
  }
}

// A lone four can be a double four in one line (x _ x X x _ x): then the
// cells just past the black stones on both sides are four points as well.
bool fourPointsOnBothEnds(const Board& b, Move m, int d) {
  for (int sign = -1; sign <= 1; sign += 2) {
    const Move end = pastBlackOnBoard(b, m, d, sign);
    if (end == kNoMove || blackCode(b, end, d) < kCodeFourDead) return false;
  }
  return true;
}

// With the stone on `m`: does the three in direction d become an open four
// that black may play? Tried past the stones on the positive side, then on
// the negative side.
bool realThree(Board& b, Move m, int d) {
  for (int sign = 1; sign >= -1; sign -= 2) {
    const Move n = pastBlack(b, m, sign * kDirStep[d]);
    if (!inRange(n) || blackCode(b, n, d) != kCodeOpenFour) continue;
    if (b.threeTestSkipsFivePoints && b.threat(BLACK, kFiveClass).contains(n)) continue;
    if (!isForbidden(b, n)) return true;
  }
  return false;
}

// With the stone on `m`: how many fives black can complete in direction d.
// An open four counts once.
int realFours(Board& b, Move m, int d, int codeBefore) {
  int fours = 0;
  for (int sign = 1; sign >= -1; sign -= 2) {
    const Move n = pastBlackOnBoard(b, m, d, sign);
    if (n == kNoMove || blackCode(b, n, d) != kCodeFive || isForbidden(b, n)) continue;
    ++fours;
    if (codeBefore == kCodeOpenFour) break;
  }
  return fours;
}

}  // namespace

bool isForbidden(Board& b, Move m) {
  const uint32_t word = b.info[m].patternWord[0];
  int counted = 0, first = -1, last = -1;
  bool overline = false;
  for (int d = 0; d < kDirections; ++d) {
    const int code = int(word >> (4 * d) & 15);
    if (code == kCodeFive) return false;
    if (code == kCodeOverline) {
      overline = true;
      continue;
    }
    if (code > kCodeClosedThreeAlive) {
      ++counted;
      if (first < 0) first = d;
      last = d;
    }
  }
  if (overline) return true;
  if (counted == 0) return false;

  // Cheap exits: one threat, or a three beside one four, is allowed unless
  // the four is a double four in its own line.
  auto codeOf = [word](int d) { return int(word >> (4 * d) & 15); };
  if (counted == 1) {
    const int code = codeOf(first);
    if (code < kCodeFourDead || code == kCodeOpenFour) return false;
    if (!fourPointsOnBothEnds(b, m, first)) return false;
  } else if (counted == 2) {
    const bool firstFour = codeOf(first) >= kCodeFourDead, lastFour = codeOf(last) >= kCodeFourDead;
    if (firstFour != lastFour && !fourPointsOnBothEnds(b, m, firstFour ? first : last)) return false;
  }

  b.placeStone<Update::Light>(m, BLACK);
  int threes = 0, fours = 0;
  for (int d = first; d <= last; ++d) {
    const int code = codeOf(d);
    if (code == kCodeThreeOne || code == kCodeThreeTwo)
      threes += realThree(b, m, d);
    else if (code >= kCodeFourDead && code <= kCodeOpenFour)
      fours += realFours(b, m, d, code);
  }
  b.removeStone<Update::Light>(m);
  return threes >= 2 || fours >= 2;
}

}  // namespace zorva
