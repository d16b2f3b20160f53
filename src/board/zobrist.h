#pragma once
// Position hash keys: one 64-bit key per cell and colour (black, white, wall).
#include <cstdint>

#include "board/types.h"

namespace zorva {

// zobristKeys[move][colour]; colour 0 is unused and stays 0.
extern uint64_t zobristKeys[kCellSlots][4];

// Draws the keys from the runtime's generator; call once, after seeding it and
// before any board is used. Calling again keeps the keys already drawn.
void initZobrist();

// One key from five successive 15-bit draws; never 0.
uint64_t drawKey();

}  // namespace zorva
