#include "board/zobrist.h"

#include <cstdlib>

namespace zorva {

uint64_t zobristKeys[kCellSlots][4];

namespace {
bool keysDrawn = false;

uint64_t draw15() { return uint64_t(std::rand() & 0x7FFF); }
}  // namespace

uint64_t drawKey() {
  uint64_t key = 0;
  while (key == 0) {
    uint64_t r1 = draw15(), r2 = draw15(), r3 = draw15(), r4 = draw15(), r5 = draw15();
    key = r1 ^ (r2 << 15) ^ (r3 << 30) ^ (r4 << 45) ^ (r5 << 60);
  }
  return key;
}

void initZobrist() {
  if (keysDrawn) return;
  for (int row = 0; row < kMaxSide; ++row)
    for (int col = 0; col < kMaxSide; ++col)
      for (int colour = BLACK; colour <= WALL; ++colour)
        zobristKeys[makeMove(row, col)][colour] = drawKey();
  keysDrawn = true;
}

}  // namespace zorva
