#pragma once
// Value tables indexed by a colour's whole pattern word (four direction
// codes, direction d in bits 4d..4d+3), filled once from the codes.
#include <cstdint>

namespace zorva {

// Static worth of a cell to a colour before the room scaling of the cell value.
extern int16_t patternValue[1 << 16];
// Strength of black's shapes on a cell, read by the Renju term of the
// evaluation: at or above kBlackValueThreshold the cell holds a four, an
// overline or three threes for black; a double three alone stays below.
extern int16_t blackValue[1 << 16];
constexpr int kBlackValueThreshold = 158;

// Fills both tables; idempotent and safe from several threads.
void initValueTables();

// cellValue of a cell: the pattern value scaled by its room, 32 being full room.
inline int scaledCellValue(uint32_t patternWord, int roomSum) {
  return patternValue[patternWord & 0xFFFF] * roomSum >> 5;
}

}  // namespace zorva
