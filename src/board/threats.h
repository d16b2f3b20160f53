#pragma once
// Threat sets: for one colour and one class (five, open four, four, three),
// the cells whose code in some direction belongs to the class, kept as
// bitmasks so that the move generator and the evaluation visit only them.
#include <bit>
#include <cstdint>

#include "board/types.h"

namespace zorva {

struct ThreatSet {
  uint8_t cellDirs[kCellSlots];  // bit d: the cell's code in direction d is in the class
  uint32_t rowMask[kMaxSide];    // bit col: that cell's direction mask is not zero
  uint32_t summary;              // bit row: that row's mask is not zero

  bool empty() const { return summary == 0; }
  bool contains(Move m) const { return cellDirs[m] != 0; }

  void add(Move m, int d) {
    cellDirs[m] |= uint8_t(1 << d);
    rowMask[rowOf(m)] |= 1u << colOf(m);
    summary |= 1u << rowOf(m);
  }

  // A cell leaves only when no direction keeps it, a row when its last cell leaves.
  void remove(Move m, int d) {
    if ((cellDirs[m] &= uint8_t(~(1 << d))) != 0) return;
    if ((rowMask[rowOf(m)] &= ~(1u << colOf(m))) != 0) return;
    summary &= ~(1u << rowOf(m));
  }

  // Visits the cells lowest row first, lowest column first within a row;
  // stops early when `visit` returns false.
  template <class Visit>
  bool forEach(Visit visit) const {
    for (uint32_t rows = summary; rows; rows &= rows - 1) {
      const int row = std::countr_zero(rows);
      for (uint32_t cols = rowMask[row]; cols; cols &= cols - 1)
        if (!visit(makeMove(row, std::countr_zero(cols)))) return false;
    }
    return true;
  }

  // The first cell in visiting order into *first; returns 0, 1, or 2 for two or more.
  int firstOf(Move* first) const {
    int n = 0;
    forEach([&](Move m) {
      if (n == 0) *first = m;
      return ++n < 2;
    });
    return n;
  }

  // Appends the cells to `out` in visiting order; returns how many.
  int collect(Move* out) const {
    int n = 0;
    forEach([&](Move m) {
      out[n++] = m;
      return true;
    });
    return n;
  }

  int count() const {
    int n = 0;
    for (uint32_t rows = summary; rows; rows &= rows - 1) n += std::popcount(rowMask[std::countr_zero(rows)]);
    return n;
  }

  bool operator==(const ThreatSet&) const = default;
};

}  // namespace zorva
